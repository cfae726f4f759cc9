#include "vorhost/upload/form_post.h"

#include "os/pipe_signal_block.h"

#include <curl/curl.h>

#include <array>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace NVORHOST {
namespace {

constexpr long timeoutMilliseconds = 10'000;
constexpr std::size_t largestBodyBytes = 65'536;

// The process-wide state of libcurl, which exists until the module is unloaded.
class TCurlLibrary {
  public:
    TCurlLibrary() { (void)curl_global_init(CURL_GLOBAL_DEFAULT); }  // curl_easy_init then fails
    ~TCurlLibrary() { curl_global_cleanup(); }
    TCurlLibrary(const TCurlLibrary&) = delete;
    TCurlLibrary& operator=(const TCurlLibrary&) = delete;
};

using TCurl = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;

TCurl OpenCurl() {
    static const TCurlLibrary library;
    return {curl_easy_init(), &curl_easy_cleanup};
}

std::string Encode(CURL* curl, const std::string& text) {
    const std::unique_ptr<char, decltype(&curl_free)> encoded(
        curl_easy_escape(curl, text.data(), static_cast<int>(text.size())), &curl_free);
    if (encoded == nullptr) {
        throw std::bad_alloc();
    }
    return encoded.get();
}

std::string EncodeForm(CURL* curl, std::span<const TFormField> fields) {
    std::string form;
    for (const auto& field : fields) {
        form.append(form.empty() ? "" : "&").append(Encode(curl, field.name)).append("=");
        form.append(Encode(curl, field.value));
    }
    return form;
}

struct TBody {
    std::string text;
    bool overflown = false;
};

// The write callback of libcurl. Returning fewer bytes than were passed aborts the transfer.
std::size_t TakeBytes(char* bytes, std::size_t /*one*/, std::size_t count, void* target) {
    auto& body = *static_cast<TBody*>(target);
    body.overflown = count > largestBodyBytes - body.text.size();
    if (body.overflown) {
        return 0;
    }
    try {
        body.text.append(bytes, count);
    } catch (const std::bad_alloc&) {
        return 0;  // exceptions must not propagate through libcurl
    }
    return count;
}

// Sets options; after the first failure, further calls have no effect.
class TOptions {
  public:
    explicit TOptions(CURL* curl) : curl_(curl) {}

    template <typename T>
    TOptions& Set(CURLoption option, T value) {
        if (status_ == CURLE_OK) {
            status_ = curl_easy_setopt(curl_, option, value);
        }
        return *this;
    }

    CURLcode GetStatus() const { return status_; }

  private:
    CURL* curl_;
    CURLcode status_ = CURLE_OK;
};

using TErrorText = std::array<char, CURL_ERROR_SIZE>;

CURLcode Perform(CURL* curl, const std::string& url, const std::string& form, TBody& body,
                 TErrorText& error) {
    const CURLcode status = TOptions(curl)
                                .Set(CURLOPT_ERRORBUFFER, error.data())
                                .Set(CURLOPT_URL, url.c_str())
                                .Set(CURLOPT_PROTOCOLS_STR, "http,https")
                                .Set(CURLOPT_FOLLOWLOCATION, 0L)
                                .Set(CURLOPT_TIMEOUT_MS, timeoutMilliseconds)
                                .Set(CURLOPT_NOSIGNAL, 1L)
                                .Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(form.size()))
                                .Set(CURLOPT_POSTFIELDS, form.c_str())
                                .Set(CURLOPT_WRITEFUNCTION, &TakeBytes)
                                .Set(CURLOPT_WRITEDATA, static_cast<void*>(&body))
                                .GetStatus();
    return status == CURLE_OK ? curl_easy_perform(curl) : status;
}

std::string DescribeFailure(CURLcode status, const TBody& body, const TErrorText& error) {
    if (body.overflown) {
        return "the response is larger than " + std::to_string(largestBodyBytes) + " bytes";
    }
    const std::string_view detail = error.data();
    return std::string(detail.empty() ? curl_easy_strerror(status) : detail);
}

TPostResult PostForm(const std::string& url, std::span<const TFormField> fields) {
    const TPipeSignalBlock block;  // TLS raises the signal when a server ends, also while it is closed
    const TCurl curl = OpenCurl();
    if (curl == nullptr) {
        return {false, "libcurl cannot be initialised"};
    }
    TBody body;
    TErrorText error{};
    const std::string form = EncodeForm(curl.get(), fields);
    const CURLcode status = Perform(curl.get(), url, form, body, error);
    if (status != CURLE_OK) {
        return {false, "no usable answer: " + DescribeFailure(status, body, error)};
    }
    long httpStatus = 0;
    (void)curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &httpStatus);  // 0 is a failure below
    if (httpStatus < 200 || httpStatus > 299) {
        return {false, "refused with HTTP status " + std::to_string(httpStatus)};
    }
    return {true, std::move(body.text)};
}

}  // namespace
}  // namespace NVORHOST

extern "C" NKELVOR20_API void noxinfoPostForm(const std::string& url,
                                              std::span<const NVORHOST::TFormField> fields,
                                              NVORHOST::TPostResult& result) {
    result = NVORHOST::PostForm(url, fields);
}
