// Classes and case of ASCII characters, regardless of the locale. Other bytes belong to no class and keep
// their value.
#pragma once

#include <string>
#include <string_view>

namespace NVORHOST {

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool IsUpper(char c) {
    return c >= 'A' && c <= 'Z';
}

constexpr bool IsLower(char c) {
    return c >= 'a' && c <= 'z';
}

constexpr bool IsLetter(char c) {
    return IsUpper(c) || IsLower(c);
}

constexpr bool IsAlphanumeric(char c) {
    return IsDigit(c) || IsLetter(c);
}

constexpr bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

constexpr char ToLower(char c) {
    return IsUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char ToUpper(char c) {
    return IsLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Returns `text` in lower case.
std::string ToLowerCase(std::string_view text);

/// Returns `text` in upper case.
std::string ToUpperCase(std::string_view text);

/// True if the texts differ at most in case.
bool EqualIgnoringCase(std::string_view left, std::string_view right);

}  // namespace NVORHOST
