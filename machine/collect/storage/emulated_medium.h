// Drives that a management controller emulates on USB: the virtual floppy, disk and disc drives of remote
// consoles, and the images that a controller shows to the machine it manages.
#pragma once

#include "machine/collect/storage/scsi_device.h"

#include <optional>
#include <string>

namespace NVORHOST {

/// True when the texts of the drive or the vendor of its USB device belong to a management controller.
/// `model` is that of ReadScsiModel. Drives on other buses are none; without a device path the texts alone
/// decide.
bool IsEmulatedMedium(const TScsiDevice& device, const std::optional<std::string>& model);

}  // namespace NVORHOST
