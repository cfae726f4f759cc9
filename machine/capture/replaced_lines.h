// Replaces a text line by line.
#pragma once

#include "text/lines.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// Returns `text` with each line replaced by the result of `replace`.
template <typename TReplace>
std::string ReplaceLines(std::string_view text, TReplace&& replace) {
    std::string replaced;
    ForEachLine(text, [&](std::string_view line) {
        replaced += replace(line);
        replaced += '\n';
    });
    if (!text.ends_with('\n') && !replaced.empty()) {
        replaced.pop_back();
    }
    return replaced;
}

}  // namespace NVORHOST
