// CIM_DiskPartition: the partitions of the machine's disks and md arrays.
#pragma once

#include "vorhost/collect/class_shape.h"
#include "vorhost/collect/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each partition, disk by disk and then array by array in the order of their numbers.
void CollectDiskPartitions(TCollection& collection);
std::span<const TClassShape> GetDiskPartitionClasses();
std::span<const TSourcePattern> GetDiskPartitionSources();

}  // namespace NVORHOST
