// Text for formats that accept only well-formed UTF-8.
#pragma once

#include "text/utf8.h"

#include <string>
#include <string_view>

namespace NINVENTORY {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";  // U+FFFD

/// Returns `text` with every malformed byte replaced by U+FFFD.
inline std::string MakeWellFormed(std::string_view text) {
    return NVORHOST::ReplaceMalformedUtf8(text).value_or(std::string(text));
}

/// Returns `text` with every NUL, which readers of text take for its end, replaced by U+FFFD.
inline std::string ReplaceNul(std::string text) {
    for (auto at = text.find('\0'); at != std::string::npos; at = text.find('\0', at)) {
        text.replace(at, 1, replacementCharacter);
    }
    return text;
}

}  // namespace NINVENTORY
