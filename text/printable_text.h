// The one gate for text that becomes a property: firmware and devices give bytes, documents want characters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace NVORHOST {

struct TPrintableText {
    std::string text;              ///< valid UTF-8, trimmed, no control characters
    std::size_t replacements = 0;  ///< bytes that had no place in it
};

/// `bytes` as text: ends at nothing but the end, blanks at both ends off; tabs and line ends inside become a
/// blank each; every other control character, NUL included, and every byte that is not part of a well-formed
/// UTF-8 sequence becomes U+FFFD and is counted. NULs at the end are padding and only trimmed.
TPrintableText ToPrintableText(std::string_view bytes);

/// `text` with each run of blanks made one, and none at its ends. Firmware pads names to the width of its own
/// columns: "Kingston                       HP647647".
std::string SqueezeBlanks(std::string_view text);

}  // namespace NVORHOST
