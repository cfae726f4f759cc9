// The single conversion of bytes from firmware and devices into text for properties. Decision:
// docs/decisions/0006.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace NVORHOST {

struct TPrintableText {
    std::string text;              ///< valid UTF-8, trimmed, no control characters
    std::size_t replacements = 0;  ///< number of bytes that were replaced
};

/// Converts `bytes` to text: trims blanks and NULs at both ends, replaces each tab and line end inside by a
/// blank, and replaces every other control character, including NUL, and every malformed byte by U+FFFD,
/// which `replacements` counts.
TPrintableText ToPrintableText(std::string_view bytes);

/// Replaces each run of blanks by one blank and removes those at the ends. Firmware pads names to column
/// widths: "Kingston                       HP647647".
std::string SqueezeBlanks(std::string_view text);

}  // namespace NVORHOST
