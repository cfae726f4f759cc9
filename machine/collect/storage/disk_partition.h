// CIM_DiskPartition: the partitions of the machine's disks and of the volumes that the kernel builds from
// them.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each partition, disk by disk and then volume by volume in the order of their numbers. The
/// partitions of a multipath set are listed on the set, not on the disks that are paths to it.
void CollectDiskPartitions(TCollection& collection);
std::span<const TClassShape> GetDiskPartitionClasses();
std::span<const TSourcePattern> GetDiskPartitionSources();

}  // namespace NVORHOST
