// The kernel's lists of processor numbers, as in package_cpus_list.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// The numbers of a list such as "0-3,8,10-11", ascending.
/// Absent: empty for a text that is no such list, is not in ascending order, or names a number from 65536 on.
std::vector<std::uint32_t> ParseCpuList(std::string_view text);

}  // namespace NVORHOST
