// Walks the lines and words of a text without copying them.
#pragma once

#include "text/trim.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace NVORHOST {

/// Calls `visit` with each line, without its line feed. A last line without a line feed is visited too.
template <typename TVisit>
void ForEachLine(std::string_view text, TVisit&& visit) {
    while (!text.empty()) {
        const auto end = text.find('\n');
        visit(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

/// Returns the parts of `line` before and after the first `separator`; without a separator, `line` and "".
constexpr std::pair<std::string_view, std::string_view> SplitAt(std::string_view line, char separator) {
    const auto place = line.find(separator);
    if (place == std::string_view::npos) {
        return {line, {}};
    }
    return {line.substr(0, place), line.substr(place + 1)};
}

/// Removes the part up to and including the first `separator` from `text` and returns it without the
/// separator. Without a separator, all of `text` is taken.
constexpr std::string_view TakeUntil(std::string_view& text, char separator) {
    const auto [part, rest] = SplitAt(text, separator);
    text = rest;
    return part;
}

/// Removes the first word of `text`, with the white space before it, and returns it; "" if there is no word.
constexpr std::string_view TakeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(asciiBlanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(asciiBlanks));
    text.remove_prefix(word.size());
    return word;
}

}  // namespace NVORHOST
