// The texts of the firmware that the kernel shows one file each.
#pragma once

#include "machine/system/system_files.h"

#include <string_view>

namespace NVORHOST {

/// "/sys/class/dmi/id", else the folder that it links to, which captured trees may have without the link.
/// Empty when the tree has neither.
std::string_view FindDmiFolder(const ISystemFiles& files);

}  // namespace NVORHOST
