// What XML 1.0 lets a document carry as text.
#pragma once

#include <string_view>

namespace NVORHOST {

/// True when `bytes` are UTF-8 of characters that XML 1.0 allows: no control characters but tab, line feed
/// and carriage return, no surrogates, neither U+FFFE nor U+FFFF, no overlong forms. Source: XML 1.0,
/// production 2 (Char).
bool IsXmlText(std::string_view bytes);

/// White space as XML knows it: space, tab, line feed, carriage return.
constexpr std::string_view xmlSpace = " \t\n\r";

/// `text` without the white space at its two ends.
std::string_view TrimXmlSpace(std::string_view text);

}  // namespace NVORHOST
