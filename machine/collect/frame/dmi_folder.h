// The firmware's texts as the kernel shows them, one file each.
#pragma once

#include "machine/system/system_files.h"

#include <optional>
#include <string>

namespace NVORHOST {

/// Returns "/sys/class/dmi/id", else the folder that it links to, which captured trees may have without the
/// link; nullopt if the tree has neither.
std::optional<std::string> FindDmiFolder(const ISystemFiles& files);

}  // namespace NVORHOST
