// Words that consist of ASCII letters and digits.
#pragma once

#include "text/ascii.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace NVORHOST {

/// Returns the length of the word at the start of `text`; 0 if `text` does not start with a letter or digit.
constexpr std::size_t WordLength(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::find_if_not(text, IsAlphanumeric) - text.begin());
}

/// True if no word of `text` continues past its first `length` characters.
constexpr bool EndsWord(std::string_view text, std::size_t length) {
    return length >= text.size() || !IsAlphanumeric(text[length]);
}

}  // namespace NVORHOST
