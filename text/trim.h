// Removes characters at both ends of a text.
#pragma once

#include <string_view>

namespace NVORHOST {

/// Blanks, tabs and line ends: the white space of ASCII.
inline constexpr std::string_view asciiBlanks = " \t\r\n\v\f";

/// Returns the part of `text` between its first and its last character that is not among `characters`.
constexpr std::string_view Trim(std::string_view text, std::string_view characters) {
    const auto first = text.find_first_not_of(characters);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(characters) - first + 1);
}

/// Returns `text` without the white space at its ends.
constexpr std::string_view TrimBlanks(std::string_view text) {
    return Trim(text, asciiBlanks);
}

}  // namespace NVORHOST
