// Names that the kernel gives to block devices in the order in which it finds them, such as "sda1".
#pragma once

#include <string>
#include <string_view>

namespace NINVENTORY {

/// Replaces what depends on the order of discovery in each kernel name of `text` by "?": "sda1" becomes
/// "sd?1", "nvme0n1p2" becomes "nvme?n1p2", "dm-6" becomes "dm-?". Everything else is kept.
std::string HideKernelNames(std::string_view text);

/// True if resources of this type have such names in the texts that describe them.
bool HasKernelNames(std::string_view resourceType, std::string_view property);

}  // namespace NINVENTORY
