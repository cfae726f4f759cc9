// KELSG_CDROMDrive and KELSG_DVDDrive: the machine's optical drives.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each optical drive: a KELSG_DVDDrive when it is said to read DVDs, else a
/// KELSG_CDROMDrive.
void CollectOpticalDrives(TCollection& collection);
std::span<const TClassShape> GetOpticalDriveClasses();
std::span<const TSourcePattern> GetOpticalDriveSources();

}  // namespace NVORHOST
