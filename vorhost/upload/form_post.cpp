#include "vorhost/upload/form_post.h"

#include "http/curl.h"
#include "os/pipe_signal_block.h"

#include <memory>
#include <new>
#include <utility>

namespace NVORHOST {
namespace {

constexpr long timeoutMilliseconds = 10'000;
constexpr std::size_t largestBodyBytes = 65'536;

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

CURLcode Perform(CURL* curl, const std::string& url, const std::string& form, TBody& body,
                 TCurlErrorText& error) {
    const CURLcode status = TCurlOptions(curl)
                                .SetHttp(error)
                                .Set(CURLOPT_URL, url.c_str())
                                .Set(CURLOPT_TIMEOUT_MS, timeoutMilliseconds)
                                .Set(CURLOPT_NOSIGNAL, 1L)
                                .Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(form.size()))
                                .Set(CURLOPT_POSTFIELDS, form.c_str())
                                .Set(CURLOPT_WRITEFUNCTION, &TakeBytes)
                                .Set(CURLOPT_WRITEDATA, static_cast<void*>(&body))
                                .GetCode();
    return status == CURLE_OK ? curl_easy_perform(curl) : status;
}

std::string DescribeCause(CURLcode status, const TBody& body, const TCurlErrorText& error) {
    return body.overflown ? "the response is larger than " + std::to_string(largestBodyBytes) + " bytes"
                          : DescribeFailure(status, error);
}

TPostResult PostForm(const std::string& url, std::span<const TFormField> fields) {
    const TPipeSignalBlock block;  // TLS raises the signal when a server ends, also while it is closed
    const TCurlHandle curl = OpenCurlHandle();
    if (curl == nullptr) {
        return {false, "libcurl cannot be initialised"};
    }
    TBody body;
    TCurlErrorText error{};
    const std::string form = EncodeForm(curl.get(), fields);
    const CURLcode status = Perform(curl.get(), url, form, body, error);
    if (status != CURLE_OK) {
        return {false, "no usable answer: " + DescribeCause(status, body, error)};
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
