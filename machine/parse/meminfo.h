// Parses /proc/meminfo: the total and free amounts of memory and swap.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

/// Amounts in KiB: the file has the unit kB for 1024 bytes.
struct TMemInfo {
    std::optional<std::uint64_t> totalKiB;
    std::optional<std::uint64_t> freeKiB;
    std::optional<std::uint64_t> swapTotalKiB;
    std::optional<std::uint64_t> swapFreeKiB;
};

/// Shape:  lines "Name:   123 kB".
/// Absent: a member whose line is missing, has another unit or a malformed number.
TMemInfo ParseMemInfo(std::string_view text);

}  // namespace NVORHOST
