// The text that an XML 1.0 document can carry.
#pragma once

#include <algorithm>
#include <string_view>

namespace NVORHOST {

/// True if `bytes` are well-formed UTF-8 without characters that XML 1.0 forbids: control characters other
/// than tab, line feed and carriage return, U+FFFE and U+FFFF.
/// Source: XML 1.0, production 2 (Char).
bool IsXmlText(std::string_view bytes);

/// The white space of XML: space, tab, line feed, carriage return. Source: XML 1.0, production 3 (S).
constexpr std::string_view xmlSpace = " \t\n\r";

/// True if `text` has no other characters; also if it is empty.
constexpr bool IsXmlSpace(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
}

/// Returns `text` without the white space at its ends.
std::string_view TrimXmlSpace(std::string_view text);

}  // namespace NVORHOST
