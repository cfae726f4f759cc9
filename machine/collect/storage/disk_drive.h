// KELSG_DiskDrive and CIM_DiskDrive: the machine's disks.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each disk: a physical one as KELSG_DiskDrive, one that a hypervisor, an emulator or a
/// RAID adapter presents as CIM_DiskDrive. Volumes of RAID adapters that have a class of their own are left
/// to logical_disk.h.
void CollectDiskDrives(TCollection& collection);
std::span<const TClassShape> GetDiskDriveClasses();
std::span<const TSourcePattern> GetDiskDriveSources();

}  // namespace NVORHOST
