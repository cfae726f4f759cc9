// Drives that a management controller emulates on USB: the virtual floppy, disk and CD drives of a remote
// console, and images that the controller presents to the machine that it manages.
#pragma once

#include "machine/collect/storage/scsi_device.h"

#include <optional>
#include <string>

namespace NVORHOST {

/// True if the texts of the drive or the vendor of its USB device are those of a management controller.
/// `model` is the result of ReadScsiModel. Always false for drives that are not on USB; only the texts count
/// if the path is unknown.
bool IsEmulatedMedium(const TScsiDevice& device, const std::optional<std::string>& model);

}  // namespace NVORHOST
