// What the users of libcurl have in common: handles, lists, options and the kinds of failures. Only modules
// that are loaded for a connection link it.
#pragma once

#include <curl/curl.h>

#include <array>
#include <memory>
#include <optional>
#include <string>

namespace NVORHOST {

using TCurlHandle = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
using TCurlList = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

/// The text that libcurl writes for a failure (CURLOPT_ERRORBUFFER); empty if there is none.
using TCurlErrorText = std::array<char, CURL_ERROR_SIZE>;

/// Returns a handle for one transfer after the other; null if libcurl cannot be initialised. The state of
/// libcurl for the whole process exists from the first call until the module is unloaded.
TCurlHandle OpenCurlHandle();

/// Returns a list without elements.
inline TCurlList MakeCurlList() {
    return {nullptr, &curl_slist_free_all};
}

/// Errors: throws std::bad_alloc.
void AppendLine(TCurlList& list, const std::string& line);

/// Sets options of a handle. After the first failure, further calls have no effect.
class TCurlOptions {
  public:
    explicit TCurlOptions(CURL* handle) : handle_(handle) {}

    template <typename T>
    TCurlOptions& Set(CURLoption option, T value) {
        if (code_ == CURLE_OK) {
            code_ = curl_easy_setopt(handle_, option, value);
        }
        return *this;
    }

    /// Does nothing without bytes, which must outlive the transfers.
    TCurlOptions& SetBytes(CURLoption option, const std::optional<std::string>& bytes);

    /// Only HTTP and HTTPS, without redirects; failures are described in `error`, which must outlive the
    /// transfers.
    TCurlOptions& SetHttp(TCurlErrorText& error);

    /// Certificates are verified: by `authorities` (PEM, which must outlive the transfers), or by those of
    /// the system without them.
    TCurlOptions& SetTrust(const std::optional<std::string>& authorities);

    /// A connection without TLS goes past every proxy, which could read what is sent.
    TCurlOptions& SetUrl(const std::string& url);

    /// The first failure, or CURLE_OK.
    CURLcode GetCode() const { return code_; }

  private:
    CURL* handle_;
    CURLcode code_ = CURLE_OK;
};

/// Kinds of failures that users treat differently.
enum class ECurlFailure {
    unreachable,  ///< no connection, a broken one, no answer in time, or an answer that is not HTTP
    untrusted,    ///< a certificate is not accepted
    impossible,   ///< this machine cannot try, for example because of a malformed key or URL
};

/// Returns the kind of a failed transfer.
ECurlFailure ClassifyFailure(CURLcode code);

/// Returns the cause of a failed transfer in one line.
std::string DescribeFailure(CURLcode code, const TCurlErrorText& error);

}  // namespace NVORHOST
