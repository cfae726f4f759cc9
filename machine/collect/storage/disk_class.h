// The classes that disks and software volumes are instances of.
#pragma once

#include "machine/collect/storage/block_device.h"

#include <string_view>

namespace NVORHOST {

inline constexpr std::string_view physicalDiskClassName = "KELSG_DiskDrive";
inline constexpr std::string_view virtualDiskClassName = "CIM_DiskDrive";
inline constexpr std::string_view lsiDiskClassName = "KELSG_LSILogicalDisk";
inline constexpr std::string_view lsiIdeDiskClassName = "KELSG_LSIIDELogicalDisk";
inline constexpr std::string_view srDiskClassName = "KELSG_srLogicalDisk";
inline constexpr std::string_view softwareVolumeClassName = "KELSG_LogicalDisk";

/// Returns the name of the class that has an instance for `disk`.
std::string_view GetDiskClassName(const TDisk& disk);

}  // namespace NVORHOST
