// Fields of comma-separated values (RFC 4180).
#pragma once

#include <string>
#include <string_view>

namespace NINVENTORY {

/// Returns a text in quotes, each of its own quotes doubled. Malformed UTF-8 and NUL become U+FFFD.
std::string QuoteCsv(std::string_view text);

}  // namespace NINVENTORY
