// Parses the kernel's lists of processor numbers, such as package_cpus_list.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Returns the numbers of a list such as "0-3,8,10-11".
/// Absent: empty for a malformed list, a list that is not in ascending order, and numbers above 65535.
std::vector<std::uint32_t> ParseCpuList(std::string_view text);

}  // namespace NVORHOST
