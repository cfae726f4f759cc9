// Parses /proc/stat: the time when the system booted.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

/// Returns the number of the "btime" line, seconds since 1970-01-01 UTC; nullopt without a positive one.
std::optional<std::int64_t> ParseBootTime(std::string_view text);

}  // namespace NVORHOST
