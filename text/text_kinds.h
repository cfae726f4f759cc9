// Kinds of characters and texts, without regard to the locale.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace NVORHOST {

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool IsUpper(char c) {
    return c >= 'A' && c <= 'Z';
}

constexpr char ToLower(char c) {
    return IsUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr bool IsLetter(char c) {
    return ToLower(c) >= 'a' && ToLower(c) <= 'z';
}

constexpr bool IsAlphanumeric(char c) {
    return IsDigit(c) || IsLetter(c);
}

constexpr char ToUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr bool IsHexDigit(char c) {
    return IsDigit(c) || (ToLower(c) >= 'a' && ToLower(c) <= 'f');
}

/// Identities consist of such characters; others separate them. Bytes of characters that are not ASCII are
/// part of a name.
constexpr bool IsIdentityCharacter(char c) {
    return IsAlphanumeric(c) || static_cast<unsigned char>(c) >= 0x80;
}

/// The characters that identify, in lower case and without what separates them.
inline std::string ToCanonical(std::string_view text) {
    std::string canonical;
    for (const char c : text) {
        if (IsIdentityCharacter(c)) {
            canonical += ToLower(c);
        }
    }
    return canonical;
}

inline bool IsHex(std::string_view text) {
    return std::all_of(text.begin(), text.end(), IsHexDigit);
}

/// Two lower-case digits for each byte.
inline std::string ToHex(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<std::uint8_t>(c);
        text += {digits[byte >> 4U], digits[byte & 0x0FU]};
    }
    return text;
}

/// The bytes of hexadecimal digits; an odd one at the end is left out.
inline std::string FromHex(std::string_view digits) {
    const auto valueOf = [](char c) { return IsDigit(c) ? c - '0' : ToLower(c) - 'a' + 10; };
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>(valueOf(digits[i]) << 4 | valueOf(digits[i + 1]));
    }
    return bytes;
}

}  // namespace NVORHOST
