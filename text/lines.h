// Walks the lines of a text without copying them.
#pragma once

#include <string_view>
#include <utility>

namespace NVORHOST {

/// Calls `visit` with each line, without its line feed; a last line without one counts too.
template <typename TVisit>
void ForEachLine(std::string_view text, TVisit&& visit) {
    while (!text.empty()) {
        const auto end = text.find('\n');
        visit(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

/// The parts of a line before and behind the first `separator`; the second is empty when there is none.
inline std::pair<std::string_view, std::string_view> SplitAt(std::string_view line, char separator) {
    const auto place = line.find(separator);
    if (place == std::string_view::npos) {
        return {line, {}};
    }
    return {line.substr(0, place), line.substr(place + 1)};
}

}  // namespace NVORHOST
