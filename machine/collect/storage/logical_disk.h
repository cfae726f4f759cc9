// Logical disks: what the kernel or a RAID adapter builds from disks. The adapters' volumes are of classes of
// their own where their makers have some; raid_adapter.h says which.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One KELSG_LogicalDisk for each volume of software_volume.h; for each volume behind a RAID adapter one
/// KELSG_LSILogicalDisk, KELSG_LSIIDELogicalDisk or KELSG_srLogicalDisk, and for one of the last kind a
/// KELSG_srDiskGroup besides.
void CollectLogicalDisks(TCollection& collection);
std::span<const TClassShape> GetLogicalDiskClasses();
std::span<const TSourcePattern> GetLogicalDiskSources();

}  // namespace NVORHOST
