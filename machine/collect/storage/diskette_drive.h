// KELSG_DisketteDrive: the drives of the machine's diskette controller.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each drive that the floppy driver serves.
void CollectDisketteDrives(TCollection& collection);
std::span<const TClassShape> GetDisketteDriveClasses();
std::span<const TSourcePattern> GetDisketteDriveSources();

}  // namespace NVORHOST
