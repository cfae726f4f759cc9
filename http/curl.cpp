#include "http/curl.h"

#include <new>

namespace NVORHOST {
namespace {

class TCurlState {
  public:
    TCurlState() { (void)curl_global_init(CURL_GLOBAL_DEFAULT); }  // curl_easy_init then fails
    ~TCurlState() { curl_global_cleanup(); }
    TCurlState(const TCurlState&) = delete;
    TCurlState& operator=(const TCurlState&) = delete;
};

struct TFailureRow {
    CURLcode code;
    ECurlFailure failure;
};

// All others are failures of the network, CURLE_OUT_OF_MEMORY too: it also means a header that is too large.
constexpr TFailureRow failures[] = {
    {CURLE_PEER_FAILED_VERIFICATION, ECurlFailure::untrusted},
    {CURLE_SSL_ISSUER_ERROR, ECurlFailure::untrusted},
    {CURLE_SSL_INVALIDCERTSTATUS, ECurlFailure::untrusted},
    {CURLE_SSL_CERTPROBLEM, ECurlFailure::impossible},
    {CURLE_SSL_CACERT_BADFILE, ECurlFailure::impossible},
    {CURLE_SSL_CIPHER, ECurlFailure::impossible},
    {CURLE_FAILED_INIT, ECurlFailure::impossible},
    {CURLE_URL_MALFORMAT, ECurlFailure::impossible},
    {CURLE_NOT_BUILT_IN, ECurlFailure::impossible},
    {CURLE_BAD_FUNCTION_ARGUMENT, ECurlFailure::impossible},
    {CURLE_UNKNOWN_OPTION, ECurlFailure::impossible},
    {CURLE_SETOPT_OPTION_SYNTAX, ECurlFailure::impossible},
};

}  // namespace

TCurlHandle OpenCurlHandle() {
    static const TCurlState state;
    return {curl_easy_init(), &curl_easy_cleanup};
}

void AppendLine(TCurlList& list, const std::string& line) {
    curl_slist* const longer = curl_slist_append(list.get(), line.c_str());
    if (longer == nullptr) {
        throw std::bad_alloc();
    }
    (void)list.release();
    list.reset(longer);
}

TCurlOptions& TCurlOptions::SetBytes(CURLoption option, const std::optional<std::string>& bytes) {
    if (bytes) {
        curl_blob blob{const_cast<char*>(bytes->data()), bytes->size(), CURL_BLOB_NOCOPY};
        Set(option, &blob);
    }
    return *this;
}

TCurlOptions& TCurlOptions::SetHttp(TCurlErrorText& error) {
    return Set(CURLOPT_ERRORBUFFER, error.data())
        .Set(CURLOPT_PROTOCOLS_STR, "http,https")
        .Set(CURLOPT_FOLLOWLOCATION, 0L);
}

TCurlOptions& TCurlOptions::SetTrust(const std::optional<std::string>& authorities) {
    constexpr long isName = 2;
    Set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2))
        .Set(CURLOPT_SSL_VERIFYPEER, 1L)
        .Set(CURLOPT_SSL_VERIFYHOST, isName)
        .SetBytes(CURLOPT_CAINFO_BLOB, authorities);
    if (authorities) {
        Set(CURLOPT_CAPATH, static_cast<char*>(nullptr));  // only these are trusted
    }
    return *this;
}

TCurlOptions& TCurlOptions::SetUrl(const std::string& url) {
    Set(CURLOPT_URL, url.c_str());
    if (!url.starts_with("https:") && !url.starts_with("HTTPS:")) {
        Set(CURLOPT_PROXY, "");
    }
    return *this;
}

ECurlFailure ClassifyFailure(CURLcode code) {
    for (const TFailureRow& row : failures) {
        if (row.code == code) {
            return row.failure;
        }
    }
    return ECurlFailure::unreachable;
}

std::string DescribeFailure(CURLcode code, const TCurlErrorText& error) {
    return error[0] != '\0' ? error.data() : curl_easy_strerror(code);
}

}  // namespace NVORHOST
