// /proc/stat: when the system booted.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

/// The number of the "btime" line: seconds since 1970-01-01 UTC. Absent without such a line.
std::optional<std::int64_t> ParseBootTime(std::string_view text);

}  // namespace NVORHOST
