// The interface between the upload library and its HTTP module, which is loaded on demand. Both are built
// together, so the interface may use C++ types.
#pragma once

#include "host/export.h"

#include <span>
#include <string>

namespace NVORHOST {

struct TFormField {
    std::string name;
    std::string value;
};

struct TPostResult {
    bool succeeded = false;
    std::string text;  ///< the response body; after a failure its cause in one line
};

/// The type of the exported symbol `postFormSymbol`. Sends the fields, URL-encoded, by HTTP POST and waits at
/// most 10 seconds for the response.
/// Fails:  for a status outside 200 to 299, a URL that is neither http nor https, and a body of more than 64
///         KiB. Redirects are not followed, because the fields must only be sent to `url`.
/// Errors: throws std::bad_alloc.
using TPostForm = void(const std::string& url, std::span<const TFormField> fields, TPostResult& result);

inline constexpr char postFormSymbol[] = "noxinfoPostForm";

}  // namespace NVORHOST
