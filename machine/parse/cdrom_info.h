// /proc/sys/dev/cdrom/info: what the machine's optical drives can do, one column for each.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

struct TCdromAbilities {
    std::string name;              ///< "sr0"
    std::optional<bool> readsDvd;  ///< absent when the kernel does not say
};

/// In the order of the columns. Lines that are not known and cells that are neither 0 nor 1 are skipped;
/// empty without a line of names.
std::vector<TCdromAbilities> ParseCdromInfo(std::string_view text);

}  // namespace NVORHOST
