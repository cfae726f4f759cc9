// /proc/meminfo: how much memory and swap there is and is free.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

/// All in KiB (the file says kB and means 1024 bytes).
struct TMemInfo {
    std::optional<std::uint64_t> totalKiB;
    std::optional<std::uint64_t> freeKiB;
    std::optional<std::uint64_t> swapTotalKiB;
    std::optional<std::uint64_t> swapFreeKiB;
};

/// Shape:  lines "Name:   123 kB".
/// Absent: a line that is missing, has another unit or no number leaves its member empty.
TMemInfo ParseMemInfo(std::string_view text);

}  // namespace NVORHOST
