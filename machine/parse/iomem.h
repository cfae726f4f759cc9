// Parses /proc/iomem: the ranges of physical addresses and their owners.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

struct TIoMemRange {
    std::uint64_t first = 0;
    std::uint64_t last = 0;  ///< inclusive
    std::string name;
};

/// Returns the outermost ranges in the order of the file.
/// Shape:  lines "00100000-3ffdbfff : System RAM". Indented lines divide the range above them and are
///          skipped, as are malformed lines and ranges that end before they start.
/// Absent: users without CAP_SYS_ADMIN see 0 for every address, which gives ranges from 0 to 0.
/// Source: Linux, kernel/resource.c.
std::vector<TIoMemRange> ParseIoMem(std::string_view text);

}  // namespace NVORHOST
