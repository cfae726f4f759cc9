// HTTP POST as a module, which brings libcurl into the process.
#include "fleet/clickhouse/http_module_entry.h"
#include "host/export.h"
#include "http/curl.h"
#include "os/pipe_signal_block.h"

#include <algorithm>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace NFLEET {
namespace {

constexpr long connectMilliseconds = 10'000;

// The answer of one request on its way to the receiver.
struct TAnswer {
    CURL* handle;
    const THttpReceiver& receiver;
    bool isStopped = false;
};

// Passes a part of the body on. Returning fewer bytes than were passed aborts the transfer.
std::size_t TakeBytes(char* bytes, std::size_t size, std::size_t count, void* target) {
    auto& answer = *static_cast<TAnswer*>(target);
    long status = 0;
    (void)curl_easy_getinfo(answer.handle, CURLINFO_RESPONSE_CODE, &status);
    answer.isStopped = !answer.receiver(static_cast<int>(status), {bytes, size * count});
    return answer.isStopped ? 0 : size * count;
}

EHttpEnd EndOf(CURLcode code) {
    switch (NVORHOST::ClassifyFailure(code)) {
        case NVORHOST::ECurlFailure::untrusted:
            return EHttpEnd::untrusted;
        case NVORHOST::ECurlFailure::impossible:
            return EHttpEnd::impossible;
        case NVORHOST::ECurlFailure::unreachable:
            break;
    }
    return EHttpEnd::unreachable;
}

class TCurlHttp : public IHttp {
  public:
    explicit TCurlHttp(THttpCredentials credentials)
        : credentials_(std::move(credentials)), handle_(NVORHOST::OpenCurlHandle()) {}

    THttpResult Post(const THttpRequest& request, const THttpReceiver& receiver) override {
        if (handle_ == nullptr) {
            return {EHttpEnd::impossible, 0, "libcurl cannot be initialised"};
        }
        error_.fill('\0');
        const NVORHOST::TPipeSignalBlock block;  // OpenSSL raises SIGPIPE when a server ends
        const NVORHOST::TCurlList headers = MakeHeaders(request.contentType);
        TAnswer answer{handle_.get(), receiver};
        CURLcode code = SetFixedOptions();
        if (code == CURLE_OK) {
            code = SetRequestOptions(request, headers, answer);
        }
        if (code == CURLE_OK) {
            code = curl_easy_perform(handle_.get());
        }
        return Describe(code, answer);
    }

  private:
    NVORHOST::TCurlList MakeHeaders(const std::string& contentType) const {
        NVORHOST::TCurlList headers = NVORHOST::MakeCurlList();
        NVORHOST::AppendLine(headers, "Content-Type: " + contentType);
        NVORHOST::AppendLine(headers,
                             "Expect:");  // not sent: the server answers it only when it has read the query
        if (credentials_.user) {
            NVORHOST::AppendLine(headers, "X-ClickHouse-User: " + *credentials_.user);
        }
        if (credentials_.password) {
            NVORHOST::AppendLine(headers, "X-ClickHouse-Key: " + *credentials_.password);
        }
        return headers;
    }

    CURLcode SetFixedOptions() {
        return NVORHOST::TCurlOptions(handle_.get())
            .SetHttp(error_)
            .SetTrust(credentials_.authorities)
            .Set(CURLOPT_NOSIGNAL, 1L)
            .Set(CURLOPT_USERAGENT, "noxinfo/" NOXINFO_VERSION)
            .GetCode();
    }

    CURLcode SetRequestOptions(const THttpRequest& request, const NVORHOST::TCurlList& headers,
                               TAnswer& answer) {
        const auto milliseconds =
            std::max(1L, static_cast<long>(request.limit.count()));  // libcurl takes 0 as no limit
        return NVORHOST::TCurlOptions(handle_.get())
            .SetUrl(request.url)
            .Set(CURLOPT_HTTPHEADER, headers.get())
            .Set(CURLOPT_POST, 1L)
            .Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()))
            .Set(CURLOPT_POSTFIELDS, request.body.data())
            .Set(CURLOPT_WRITEFUNCTION, &TakeBytes)
            .Set(CURLOPT_WRITEDATA, static_cast<void*>(&answer))
            .Set(CURLOPT_CONNECTTIMEOUT_MS, std::min(connectMilliseconds, milliseconds))
            .Set(CURLOPT_TIMEOUT_MS, milliseconds)
            .GetCode();
    }

    THttpResult Describe(CURLcode code, const TAnswer& answer) const {
        if (answer.isStopped) {
            return {EHttpEnd::stopped, 0, "the answer is not as expected"};
        }
        if (code != CURLE_OK) {
            return {EndOf(code), 0, NVORHOST::DescribeFailure(code, error_)};
        }
        long status = 0;
        (void)curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
        return {EHttpEnd::answered, static_cast<int>(status), {}};
    }

    const THttpCredentials credentials_;
    NVORHOST::TCurlErrorText error_{};
    NVORHOST::TCurlHandle handle_;  // closed before what its options refer to
};

}  // namespace
}  // namespace NFLEET

extern "C" NKELVOR20_API void NFLEET_OpenHttp(NFLEET::THttpCredentials&& credentials,
                                              std::unique_ptr<NFLEET::IHttp>& http) {
    http = std::make_unique<NFLEET::TCurlHttp>(std::move(credentials));
}

static_assert(std::is_same_v<decltype(&NFLEET_OpenHttp), NFLEET::THttpEntry>);
