// The numbers by which identifying values are found.
#pragma once

#include <cstdint>
#include <string_view>

namespace NFLEET {

/// Returns 32 bits of the value's digest. Different values may share one, so rows that it finds are compared.
std::int64_t MakeSearchNumber(std::string_view value);

}  // namespace NFLEET
