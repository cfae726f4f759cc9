// Records of the udev database for block devices.
#pragma once

#include "machine/system/system_files.h"

#include <string>

namespace NVORHOST {

/// Reads the udev record of the block device in `folder`, such as "/sys/block/sda", by its device number; a
/// record without properties if there is none, as on a machine without udev.
std::string ReadUdevRecord(const ISystemFiles& files, const std::string& folder);

}  // namespace NVORHOST
