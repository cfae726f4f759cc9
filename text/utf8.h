// Well-formed UTF-8 as Unicode defines it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Returns the length, 2 to 4, of the well-formed multi-byte sequence that `bytes` starts with; 0 for an
/// empty text, an ASCII character, and a malformed or truncated sequence.
/// Source: Unicode, table 3-7.
std::size_t MultiByteLength(std::string_view bytes);

/// Returns the code point of `sequence`, which must be one whole well-formed character of 1 to 4 bytes.
char32_t DecodeUtf8(std::string_view sequence);

/// Returns the UTF-8 bytes of `code`. Surrogates and codes above U+10FFFF become U+FFFD, the replacement
/// character.
std::string EncodeUtf8(char32_t code);

/// Returns `text` with every malformed byte replaced by U+FFFD; nullopt if it is well-formed as it is.
std::optional<std::string> ReplaceMalformedUtf8(std::string_view text);

/// True for U+D800 to U+DFFF, the halves of pairs in UTF-16, which are not characters.
constexpr bool IsSurrogate(char32_t code) {
    return code >= 0xD800 && code <= 0xDFFF;
}

}  // namespace NVORHOST
