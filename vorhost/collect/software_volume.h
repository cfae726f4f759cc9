// Volumes that the kernel builds from block devices: md arrays and the device mapper's logical volumes,
// multipath and encrypted devices. How sound such a volume is follows from what lies below it.
#pragma once

#include "vorhost/collect/operational_status.h"
#include "vorhost/collect/redundancy.h"
#include "vorhost/collect/source_patterns.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

class TCollection;

struct TSoftwareVolume {
    std::string kernelName;                       ///< "md0", "dm-3"
    std::string key;                              ///< its UUID where it has one; unique among these volumes
    std::string name;                             ///< "md0"; of device mapper volumes their name, "vg0-home"
    std::string description;                      ///< what it is: "LVM logical volume"
    std::optional<std::uint64_t> sizeBytes;       ///< absent for an array that does not run
    std::optional<std::uint64_t> blockSizeBytes;  ///< logical block; absent with the size
    /// Of an array its own, of other volumes that of what they lie on; absent where that is not known.
    std::optional<TOperationalStatus> operationalStatus;
    TRedundancy redundancy;
};

/// Every volume in the order of the kernel's names. Not among them: containers of arrays, layers that LVM
/// keeps for itself, device mapper devices of other makers.
std::vector<TSoftwareVolume> ReadSoftwareVolumes(TCollection& collection);

/// What that reads besides the disks.
inline constexpr std::array<TSourcePattern, 8> softwareVolumeSources{
    "/run/udev/data/b*", "/sys/block/*/dev",  "/sys/block/*/dm/name", "/sys/block/*/dm/uuid",
    "/sys/block/*/md/*", "/sys/block/*/size", "/sys/block/*/slaves",  "/sys/block/*/slaves/**",
};

}  // namespace NVORHOST
