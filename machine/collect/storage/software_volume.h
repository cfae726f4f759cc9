// Volumes that the kernel builds from block devices: md arrays, logical volumes, multipath and encrypted
// devices of the device mapper, and bcache devices. Status and redundancy of a volume are derived from the
// underlying devices.
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
    std::string kernelName;  ///< "md0", "dm-3", "bcache0"
    std::string key;         ///< its UUID if it has one; unique among these volumes
    std::string name;        ///< "md0"; "vg0/home" for a device mapper volume
    std::string position;    ///< "md0"; the mapper's name for a device mapper volume: "vg0-home"
    std::optional<std::string> mapperUuid;  ///< UUID of a device mapper volume
    /// Kernel names of the disks of a multipath set; empty for other volumes.
    std::vector<std::string> paths;
    std::string description;                      ///< kind of volume: "LVM logical volume"
    std::optional<std::uint64_t> sizeBytes;       ///< absent for an array that is not running
    std::optional<std::uint64_t> blockSizeBytes;  ///< logical block; absent with the size
    /// An md array's own status; for other volumes, the combined status of the underlying devices. Absent if
    /// any of those is unknown.
    std::optional<TOperationalStatus> operationalStatus;
    TRedundancy redundancy;
    /// False for a bcache device: the underlying disk is listed already, only the partitions are new.
    bool isLogicalDisk = true;
};

/// Returns every volume in the order of the kernel's names. Excluded are containers of arrays, internal
/// layers of LVM, and device mapper devices of other subsystems. The volumes are read at the first call.
const std::vector<TSoftwareVolume>& GetSoftwareVolumes(TCollection& collection);

/// The paths that GetSoftwareVolumes may access besides diskSources.
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
