// Escaping of character data. The documents are plain ASCII: markup characters become entities, line ends are
// dropped, and every other byte outside 0x20 to 0x7F becomes a blank.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Returns true if escaping leaves `text` unchanged.
bool IsWrittenAsItIs(std::string_view text);

/// The largest number of characters that one byte is escaped to.
inline constexpr std::size_t maxEscapedSize = 5;

/// Writes the escaped text to `to` and returns its end.
/// Shape: `to` has room for `maxEscapedSize` characters for each byte of `text`.
char* EscapeTo(char* to, std::string_view text);

/// Returns the escaped text.
std::string Escape(std::string_view text);
