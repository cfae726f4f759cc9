// The partitions of disks and software volumes, and the keys of their CIM_DiskPartition instances.
#pragma once

#include "machine/collect/frame/source_patterns.h"
#include "machine/collect/storage/block_device.h"
#include "machine/collect/storage/software_volume.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

class TCollection;

inline constexpr std::string_view diskPartitionClassName = "CIM_DiskPartition";

struct TPartitionPlace {
    std::string kernelName;  ///< "sda1"; "dm-6" for a partition of a multipath set
    std::string wholeName;   ///< kernel name of the disk or volume that has the partition table
    std::string key;         ///< DeviceID of its instance
};

/// Returns every partition in the order of the CIM_DiskPartition instances.
std::vector<TPartitionPlace> GetPartitionPlaces(TCollection& collection);

/// The paths that partitions are read from.
inline constexpr auto partitionSources =
    Join(Join(diskSources, softwareVolumeSources), std::array<TSourcePattern, 4>{
                                                       "/sys/block/*/*/partition",
                                                       "/sys/block/*/*/uevent",
                                                       "/sys/block/*/*/dev",
                                                       "/sys/block/*/*/size",
                                                   });

}  // namespace NVORHOST
