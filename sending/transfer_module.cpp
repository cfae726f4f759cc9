// HTTP PUT as a module, which brings libcurl into the process.
#include "host/export.h"
#include "sending/transfer_module_entry.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace NVORHOST {
namespace {

constexpr std::size_t largestAnswerBytes = 65'536;
constexpr long connectMilliseconds = 10'000;
constexpr long slowestBytesPerSecond = 1;
constexpr long stalledSeconds = 30;
constexpr curl_off_t longestRetrySeconds = 31'536'000;  // a year, which any limit is below

// The process-wide state of libcurl, which exists until the module is unloaded.
class TCurlState {
  public:
    TCurlState() { (void)curl_global_init(CURL_GLOBAL_DEFAULT); }  // curl_easy_init then fails
    ~TCurlState() { curl_global_cleanup(); }
    TCurlState(const TCurlState&) = delete;
    TCurlState& operator=(const TCurlState&) = delete;
};

using THandle = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
using TList = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

THandle OpenHandle() {
    static const TCurlState state;
    return {curl_easy_init(), &curl_easy_cleanup};
}

// The bytes of one file, of which libcurl takes one part after the other.
struct TUpload {
    std::string_view bytes;
    std::size_t place = 0;
};

std::size_t GiveBytes(char* target, std::size_t size, std::size_t count, void* source) {
    auto& upload = *static_cast<TUpload*>(source);
    const std::size_t given = upload.bytes.copy(target, size * count, upload.place);
    upload.place += given;
    return given;
}

// libcurl starts again after a kept connection turned out to be closed.
int SeekBytes(void* source, curl_off_t offset, int origin) {
    auto& upload = *static_cast<TUpload*>(source);
    if (origin != SEEK_SET || offset < 0 || static_cast<std::size_t>(offset) > upload.bytes.size()) {
        return CURL_SEEKFUNC_CANTSEEK;
    }
    upload.place = static_cast<std::size_t>(offset);
    return CURL_SEEKFUNC_OK;
}

// Counts the body of an answer, which is not used. Returning fewer bytes than were passed aborts the
// transfer.
std::size_t CountBytes(char* /*bytes*/, std::size_t size, std::size_t count, void* target) {
    auto& total = *static_cast<std::size_t*>(target);
    total += size * count;
    return total > largestAnswerBytes ? 0 : size * count;
}

// Sets options; after the first failure, further calls have no effect.
class TOptions {
  public:
    explicit TOptions(CURL* handle) : handle_(handle) {}

    template <typename T>
    TOptions& Set(CURLoption option, T value) {
        if (code_ == CURLE_OK) {
            code_ = curl_easy_setopt(handle_, option, value);
        }
        return *this;
    }

    // The bytes must outlive the transfers.
    TOptions& SetBytes(CURLoption option, const std::optional<std::string>& bytes) {
        if (bytes) {
            curl_blob blob{const_cast<char*>(bytes->data()), bytes->size(), CURL_BLOB_NOCOPY};
            Set(option, &blob);
        }
        return *this;
    }

    CURLcode GetCode() const { return code_; }

  private:
    CURL* handle_;
    CURLcode code_ = CURLE_OK;
};

struct TCurlFailure {
    CURLcode code;
    ETransferEnd end;
};

// All others are failures of the network, CURLE_OUT_OF_MEMORY too: it also means a header that is too large.
constexpr TCurlFailure failures[] = {
    {CURLE_PEER_FAILED_VERIFICATION, ETransferEnd::untrusted},
    {CURLE_SSL_ISSUER_ERROR, ETransferEnd::untrusted},
    {CURLE_SSL_INVALIDCERTSTATUS, ETransferEnd::untrusted},
    {CURLE_SSL_CERTPROBLEM, ETransferEnd::impossible},
    {CURLE_SSL_CACERT_BADFILE, ETransferEnd::impossible},
    {CURLE_SSL_CIPHER, ETransferEnd::impossible},
    {CURLE_FAILED_INIT, ETransferEnd::impossible},
    {CURLE_URL_MALFORMAT, ETransferEnd::impossible},
    {CURLE_NOT_BUILT_IN, ETransferEnd::impossible},
    {CURLE_BAD_FUNCTION_ARGUMENT, ETransferEnd::impossible},
    {CURLE_UNKNOWN_OPTION, ETransferEnd::impossible},
    {CURLE_SETOPT_OPTION_SYNTAX, ETransferEnd::impossible},
};

ETransferEnd EndOf(CURLcode code) {
    for (const TCurlFailure& row : failures) {
        if (row.code == code) {
            return row.end;
        }
    }
    return ETransferEnd::unreachable;
}

class TCurlTransfer : public ITransfer {
  public:
    explicit TCurlTransfer(TTransferCredentials credentials)
        : credentials_(std::move(credentials)), handle_(OpenHandle()) {
        if (credentials_.token) {
            AddHeader("Authorization: Bearer " + *credentials_.token);
        }
        AddHeader("Content-Type: application/octet-stream");
        AddHeader("Expect:");  // not sent: servers that do not know it cost a second for each file
    }

    TTransferResult Put(const std::string& url, std::string_view bytes,
                        std::chrono::milliseconds limit) override {
        if (handle_ == nullptr) {
            return Failed(ETransferEnd::impossible, "libcurl cannot be initialised");
        }
        error_.fill('\0');
        TUpload upload{bytes, 0};
        std::size_t answerBytes = 0;
        CURLcode code = SetFixedOptions();
        if (code == CURLE_OK) {
            code = SetTransferOptions(url, upload, answerBytes, limit);
        }
        if (code == CURLE_OK) {
            code = curl_easy_perform(handle_.get());
        }
        return code == CURLE_OK ? Answer() : Describe(code, answerBytes);
    }

  private:
    void AddHeader(const std::string& line) {
        curl_slist* const longer = curl_slist_append(headers_.get(), line.c_str());
        if (longer == nullptr) {
            throw std::bad_alloc();
        }
        (void)headers_.release();
        headers_.reset(longer);
    }

    // Without CURLOPT_NOSIGNAL, libcurl ignores SIGPIPE during its calls; OpenSSL raises it when a server
    // ends.
    CURLcode SetFixedOptions() {
        constexpr long isName = 2;
        TOptions options(handle_.get());
        options.Set(CURLOPT_ERRORBUFFER, error_.data())
            .Set(CURLOPT_PROTOCOLS_STR, "http,https")
            .Set(CURLOPT_FOLLOWLOCATION, 0L)
            .Set(CURLOPT_USERAGENT, "noxinfo/" NOXINFO_VERSION)
            .Set(CURLOPT_HTTPHEADER, headers_.get())
            .Set(CURLOPT_UPLOAD, 1L)
            .Set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2))
            .Set(CURLOPT_SSL_VERIFYPEER, 1L)
            .Set(CURLOPT_SSL_VERIFYHOST, isName)
            .SetBytes(CURLOPT_SSLCERT_BLOB, credentials_.certificate)
            .SetBytes(CURLOPT_SSLKEY_BLOB, credentials_.key)
            .SetBytes(CURLOPT_CAINFO_BLOB, credentials_.authorities)
            .Set(CURLOPT_KEYPASSWD, "");  // without one, OpenSSL would prompt for it on the terminal
        if (credentials_.authorities) {
            options.Set(CURLOPT_CAPATH, static_cast<char*>(nullptr));  // only these are trusted
        }
        return options.GetCode();
    }

    CURLcode SetTransferOptions(const std::string& url, TUpload& upload, std::size_t& answerBytes,
                                std::chrono::milliseconds limit) {
        const auto milliseconds = std::max(1L, static_cast<long>(limit.count()));  // 0 is no limit
        TOptions options(handle_.get());
        options.Set(CURLOPT_URL, url.c_str())
            .Set(CURLOPT_READFUNCTION, &GiveBytes)
            .Set(CURLOPT_READDATA, static_cast<void*>(&upload))
            .Set(CURLOPT_SEEKFUNCTION, &SeekBytes)
            .Set(CURLOPT_SEEKDATA, static_cast<void*>(&upload))
            .Set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(upload.bytes.size()))
            .Set(CURLOPT_WRITEFUNCTION, &CountBytes)
            .Set(CURLOPT_WRITEDATA, static_cast<void*>(&answerBytes))
            .Set(CURLOPT_CONNECTTIMEOUT_MS, std::min(connectMilliseconds, milliseconds))
            .Set(CURLOPT_LOW_SPEED_LIMIT, slowestBytesPerSecond)
            .Set(CURLOPT_LOW_SPEED_TIME, stalledSeconds)
            .Set(CURLOPT_TIMEOUT_MS, milliseconds);
        if (!url.starts_with("https:") && !url.starts_with("HTTPS:")) {
            options.Set(CURLOPT_PROXY, "");  // a proxy could read what is sent without TLS
        }
        return options.GetCode();
    }

    TTransferResult Answer() const {
        long status = 0;
        curl_off_t retryAfter = 0;
        (void)curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
        (void)curl_easy_getinfo(handle_.get(), CURLINFO_RETRY_AFTER, &retryAfter);
        TTransferResult result;
        result.end = ETransferEnd::answered;
        result.status = static_cast<int>(status);
        if (retryAfter > 0) {
            result.retryAfter = std::chrono::seconds(std::min(retryAfter, longestRetrySeconds));
        }
        return result;
    }

    TTransferResult Describe(CURLcode code, std::size_t answerBytes) const {
        if (answerBytes > largestAnswerBytes) {
            return Failed(ETransferEnd::unreachable,
                          "the answer is larger than " + std::to_string(largestAnswerBytes) + " bytes");
        }
        return Failed(EndOf(code), error_[0] != '\0' ? error_.data() : curl_easy_strerror(code));
    }

    static TTransferResult Failed(ETransferEnd end, std::string failure) {
        return {end, 0, std::nullopt, std::move(failure)};
    }

    const TTransferCredentials credentials_;
    TList headers_{nullptr, &curl_slist_free_all};
    std::array<char, CURL_ERROR_SIZE> error_{};
    THandle handle_;  // closed before what its options refer to
};

}  // namespace
}  // namespace NVORHOST

extern "C" NKELVOR20_API void NVORHOST_OpenTransfer(NVORHOST::TTransferCredentials&& credentials,
                                                    std::unique_ptr<NVORHOST::ITransfer>& transfer) {
    transfer = std::make_unique<NVORHOST::TCurlTransfer>(std::move(credentials));
}

static_assert(std::is_same_v<decltype(&NVORHOST_OpenTransfer), NVORHOST::TTransferEntry>);
