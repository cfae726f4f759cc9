// Parses /proc/sys/dev/cdrom/info: the abilities of the optical drives, one column for each drive.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

struct TCdromAbilities {
    std::string name;              ///< "sr0"
    std::optional<bool> readsDvd;  ///< absent if the kernel lists no such ability
};

/// Returns the drives in the order of their columns; none without a line of names. Unknown lines, and cells
/// other than 0 and 1, are skipped.
std::vector<TCdromAbilities> ParseCdromInfo(std::string_view text);

}  // namespace NVORHOST
