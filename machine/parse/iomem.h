// /proc/iomem: what stands where in the machine's physical addresses.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

struct TIoMemRange {
    std::uint64_t first = 0;
    std::uint64_t last = 0;  ///< counted in
    std::string name;
};

/// Shape:  lines "00100000-3ffdbfff : System RAM"; lines that begin with a blank tell what lies within
///         the one above and are left out, as are lines of another form and ranges that end before they
///         start.
/// Absent: users without CAP_SYS_ADMIN see 0 for every address, which gives ranges from 0 to 0.
/// Source: Linux, kernel/resource.c.
std::vector<TIoMemRange> ParseIoMem(std::string_view text);

}  // namespace NVORHOST
