// Volumes that the kernel builds from block devices: md arrays, the device mapper's logical volumes,
// multipath and encrypted devices, and bcache devices. How sound such a volume is follows from what lies
// below it.
#pragma once

#include "machine/collect/frame/operational_status.h"
#include "machine/collect/frame/source_patterns.h"
#include "machine/collect/storage/redundancy.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

class TCollection;

struct TSoftwareVolume {
    std::string kernelName;                  ///< "md0", "dm-3", "bcache0"
    std::string key;                         ///< its UUID where it has one; unique among these volumes
    std::string name;                        ///< "md0"; of device mapper volumes theirs, "vg0/home"
    std::string position;                    ///< "md0"; of those the name that the mapper has, "vg0-home"
    std::string mapperUuid;                  ///< of device mapper volumes, else empty
    std::vector<std::string> paths;          ///< kernel names of the disks of a multipath set, else empty
    std::string description;                 ///< what it is: "LVM logical volume"
    std::optional<std::uint64_t> sizeBytes;  ///< absent for an array that does not run
    std::optional<std::uint64_t> blockSizeBytes;  ///< logical block; absent with the size
    /// Of an array its own, of other volumes that of what they lie on; absent where that is not known.
    std::optional<TOperationalStatus> operationalStatus;
    TRedundancy redundancy;
    /// False for a bcache device: the disk below it is listed, and only its partitions are new.
    bool isLogicalDisk = true;
};

/// Every volume in the order of the kernel's names. Not among them: containers of arrays, layers that LVM
/// keeps for itself, device mapper devices of other makers.
const std::vector<TSoftwareVolume>& GetSoftwareVolumes(TCollection& collection);

/// What that reads besides the disks.
inline constexpr std::array<TSourcePattern, 9> softwareVolumeSources{
    "/sys/block/*/bcache/backing_dev_uuid",
    "/run/udev/data/b*",
    "/sys/block/*/dev",
    "/sys/block/*/dm/name",
    "/sys/block/*/dm/uuid",
    "/sys/block/*/md/*",
    "/sys/block/*/size",
    "/sys/block/*/slaves",
    "/sys/block/*/slaves/**",
};

}  // namespace NVORHOST
