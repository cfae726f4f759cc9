// The line between the upload library and its HTTP module, which is loaded only when it is needed. Both are
// built together, so C++ types may cross.
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
    std::string text;  ///< the response body as received; of a failure its cause, in one line
};

/// The type of the module's one operation, exported under `postFormSymbol`. Sends the fields, URL-encoded, by
/// HTTP POST and waits for the answer, at most 10 seconds in all.
/// Fails:  on anything but a status of 200 to 299 (redirects are not followed: the fields are meant for `url`
///         alone), a URL that is neither http nor https, and a body above 64 KiB.
/// Errors: throws std::bad_alloc.
using TPostForm = void(const std::string& url, std::span<const TFormField> fields, TPostResult& result);

inline constexpr char postFormSymbol[] = "noxinfoPostForm";

}  // namespace NVORHOST
