// HTTP PUT as a module, which brings libcurl into the process.
#include "host/export.h"
#include "http/curl.h"
#include "sending/transfer_module_entry.h"

#include <algorithm>
#include <cstdio>
#include <memory>
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

ETransferEnd EndOf(CURLcode code) {
    switch (ClassifyFailure(code)) {
        case ECurlFailure::untrusted:
            return ETransferEnd::untrusted;
        case ECurlFailure::impossible:
            return ETransferEnd::impossible;
        case ECurlFailure::unreachable:
            break;
    }
    return ETransferEnd::unreachable;
}

class TCurlTransfer : public ITransfer {
  public:
    explicit TCurlTransfer(TTransferCredentials credentials)
        : credentials_(std::move(credentials)), handle_(OpenCurlHandle()) {
        if (credentials_.token) {
            AppendLine(headers_, "Authorization: Bearer " + *credentials_.token);
        }
        AppendLine(headers_, "Content-Type: application/octet-stream");
        AppendLine(headers_, "Expect:");  // not sent: servers that do not know it cost a second for each file
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
    // Without CURLOPT_NOSIGNAL, libcurl ignores SIGPIPE during its calls; OpenSSL raises it when a server
    // ends.
    CURLcode SetFixedOptions() {
        return TCurlOptions(handle_.get())
            .SetHttp(error_)
            .SetTrust(credentials_.authorities)
            .Set(CURLOPT_USERAGENT, "noxinfo/" NOXINFO_VERSION)
            .Set(CURLOPT_HTTPHEADER, headers_.get())
            .Set(CURLOPT_UPLOAD, 1L)
            .SetBytes(CURLOPT_SSLCERT_BLOB, credentials_.certificate)
            .SetBytes(CURLOPT_SSLKEY_BLOB, credentials_.key)
            .Set(CURLOPT_KEYPASSWD, "")  // without one, OpenSSL would prompt for it on the terminal
            .GetCode();
    }

    CURLcode SetTransferOptions(const std::string& url, TUpload& upload, std::size_t& answerBytes,
                                std::chrono::milliseconds limit) {
        const auto milliseconds = std::max(1L, static_cast<long>(limit.count()));  // 0 is no limit
        return TCurlOptions(handle_.get())
            .SetUrl(url)
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
            .Set(CURLOPT_TIMEOUT_MS, milliseconds)
            .GetCode();
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
        return Failed(EndOf(code), DescribeFailure(code, error_));
    }

    static TTransferResult Failed(ETransferEnd end, std::string failure) {
        return {end, 0, std::nullopt, std::move(failure)};
    }

    const TTransferCredentials credentials_;
    TCurlList headers_ = MakeCurlList();
    TCurlErrorText error_{};
    TCurlHandle handle_;  // closed before what its options refer to
};

}  // namespace
}  // namespace NVORHOST

extern "C" NKELVOR20_API void NVORHOST_OpenTransfer(NVORHOST::TTransferCredentials&& credentials,
                                                    std::unique_ptr<NVORHOST::ITransfer>& transfer) {
    transfer = std::make_unique<NVORHOST::TCurlTransfer>(std::move(credentials));
}

static_assert(std::is_same_v<decltype(&NVORHOST_OpenTransfer), NVORHOST::TTransferEntry>);
