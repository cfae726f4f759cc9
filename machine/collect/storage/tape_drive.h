// KELSG_TapeDrive: the machine's tape drives.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each SCSI tape drive, in the order of the kernel's names.
void CollectTapeDrives(TCollection& collection);
std::span<const TClassShape> GetTapeDriveClasses();
std::span<const TSourcePattern> GetTapeDriveSources();

}  // namespace NVORHOST
