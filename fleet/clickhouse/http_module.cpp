// HTTP POST as a module, which brings libcurl into the process.
#include "fleet/clickhouse/http_module_entry.h"
#include "host/export.h"
#include "os/pipe_signal_block.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace NFLEET {
namespace {

constexpr long connectMilliseconds = 10'000;

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

void AddHeader(TList& headers, const std::string& line) {
    curl_slist* const longer = curl_slist_append(headers.get(), line.c_str());
    if (longer == nullptr) {
        throw std::bad_alloc();
    }
    (void)headers.release();
    headers.reset(longer);
}

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
    EHttpEnd end;
};

// All others are failures of the network.
constexpr TCurlFailure failures[] = {
    {CURLE_PEER_FAILED_VERIFICATION, EHttpEnd::untrusted},
    {CURLE_SSL_ISSUER_ERROR, EHttpEnd::untrusted},
    {CURLE_SSL_INVALIDCERTSTATUS, EHttpEnd::untrusted},
    {CURLE_SSL_CACERT_BADFILE, EHttpEnd::impossible},
    {CURLE_SSL_CIPHER, EHttpEnd::impossible},
    {CURLE_FAILED_INIT, EHttpEnd::impossible},
    {CURLE_URL_MALFORMAT, EHttpEnd::impossible},
    {CURLE_NOT_BUILT_IN, EHttpEnd::impossible},
    {CURLE_BAD_FUNCTION_ARGUMENT, EHttpEnd::impossible},
    {CURLE_UNKNOWN_OPTION, EHttpEnd::impossible},
};

EHttpEnd EndOf(CURLcode code) {
    const auto row = std::ranges::find(failures, code, &TCurlFailure::code);
    return row == std::end(failures) ? EHttpEnd::unreachable : row->end;
}

class TCurlHttp : public IHttp {
  public:
    explicit TCurlHttp(THttpCredentials credentials)
        : credentials_(std::move(credentials)), handle_(OpenHandle()) {}

    THttpResult Post(const THttpRequest& request, const THttpReceiver& receiver) override {
        if (handle_ == nullptr) {
            return {EHttpEnd::impossible, 0, "libcurl cannot be initialised"};
        }
        error_.fill('\0');
        const NVORHOST::TPipeSignalBlock block;  // OpenSSL raises SIGPIPE when a server ends
        const TList headers = MakeHeaders(request.contentType);
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
    TList MakeHeaders(const std::string& contentType) const {
        TList headers{nullptr, &curl_slist_free_all};
        AddHeader(headers, "Content-Type: " + contentType);
        AddHeader(headers, "Expect:");  // not sent: the server answers it only when it has read the query
        if (credentials_.user) {
            AddHeader(headers, "X-ClickHouse-User: " + *credentials_.user);
        }
        if (credentials_.password) {
            AddHeader(headers, "X-ClickHouse-Key: " + *credentials_.password);
        }
        return headers;
    }

    CURLcode SetFixedOptions() {
        constexpr long isName = 2;
        TOptions options(handle_.get());
        options.Set(CURLOPT_ERRORBUFFER, error_.data())
            .Set(CURLOPT_PROTOCOLS_STR, "http,https")
            .Set(CURLOPT_FOLLOWLOCATION, 0L)
            .Set(CURLOPT_NOSIGNAL, 1L)
            .Set(CURLOPT_USERAGENT, "noxinfo/" NOXINFO_VERSION)
            .Set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2))
            .Set(CURLOPT_SSL_VERIFYPEER, 1L)
            .Set(CURLOPT_SSL_VERIFYHOST, isName)
            .SetBytes(CURLOPT_CAINFO_BLOB, credentials_.authorities);
        if (credentials_.authorities) {
            options.Set(CURLOPT_CAPATH, static_cast<char*>(nullptr));  // only these are trusted
        }
        return options.GetCode();
    }

    CURLcode SetRequestOptions(const THttpRequest& request, const TList& headers, TAnswer& answer) {
        const auto milliseconds =
            std::max(1L, static_cast<long>(request.limit.count()));  // libcurl takes 0 as no limit
        TOptions options(handle_.get());
        options.Set(CURLOPT_URL, request.url.c_str())
            .Set(CURLOPT_HTTPHEADER, headers.get())
            .Set(CURLOPT_POST, 1L)
            .Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()))
            .Set(CURLOPT_POSTFIELDS, request.body.data())
            .Set(CURLOPT_WRITEFUNCTION, &TakeBytes)
            .Set(CURLOPT_WRITEDATA, static_cast<void*>(&answer))
            .Set(CURLOPT_CONNECTTIMEOUT_MS, std::min(connectMilliseconds, milliseconds))
            .Set(CURLOPT_TIMEOUT_MS, milliseconds);
        if (!request.url.starts_with("https:")) {
            options.Set(CURLOPT_PROXY, "");  // a proxy could read what is sent without TLS
        }
        return options.GetCode();
    }

    THttpResult Describe(CURLcode code, const TAnswer& answer) const {
        if (answer.isStopped) {
            return {EHttpEnd::stopped, 0, "the answer is not as expected"};
        }
        if (code != CURLE_OK) {
            return {EndOf(code), 0, error_[0] != '\0' ? error_.data() : curl_easy_strerror(code)};
        }
        long status = 0;
        (void)curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
        return {EHttpEnd::answered, static_cast<int>(status), {}};
    }

    const THttpCredentials credentials_;
    std::array<char, CURL_ERROR_SIZE> error_{};
    THandle handle_;  // closed before what its options refer to
};

}  // namespace
}  // namespace NFLEET

extern "C" NKELVOR20_API void NFLEET_OpenHttp(NFLEET::THttpCredentials&& credentials,
                                              std::unique_ptr<NFLEET::IHttp>& http) {
    http = std::make_unique<NFLEET::TCurlHttp>(std::move(credentials));
}

static_assert(std::is_same_v<decltype(&NFLEET_OpenHttp), NFLEET::THttpEntry>);
