// Well-formed UTF-8 as Unicode defines it.
#pragma once

#include <cstddef>
#include <string_view>

namespace NVORHOST {

/// Length, 2 to 4, of the well-formed multi-byte sequence that `bytes` starts with.
/// Absent: 0 for an empty text, an ASCII character and a malformed or truncated sequence.
/// Source: Unicode, table 3-7.
std::size_t MultiByteLength(std::string_view bytes);

}  // namespace NVORHOST
