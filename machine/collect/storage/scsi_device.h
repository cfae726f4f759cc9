// What a SCSI device says of itself: disks, tapes and optical drives, and all that the kernel presents as
// such (ATA, SAS, USB, volumes of RAID adapters, disks of hypervisors).
#pragma once

#include "machine/collect/frame/source_patterns.h"
#include "machine/system/system_files.h"

#include <array>
#include <optional>
#include <string>

namespace NVORHOST {

struct TScsiDevice {
    const ISystemFiles& files;
    std::string folder;      ///< where its attributes are read: "/sys/block/sda/device"
    std::string devicePath;  ///< of the node that stands for it: ".../0:0:0:0/block/sda"; empty without links
};

/// Vendor and model in one text, for ATA disks the whole model name. Absent when it tells neither.
std::optional<std::string> ReadScsiModel(const TScsiDevice& device);

/// Its world-wide name, else its serial number; empty when it has neither.
std::string ReadScsiIdentity(const TScsiDevice& device);

/// "USB", "ATA", "SAS", "iSCSI" or "SCSI".
std::string FindScsiTransport(const TScsiDevice& device);

/// The folder of the USB device that it belongs to; empty when it is on no USB bus.
std::string FindUsbDeviceFolder(const TScsiDevice& device);

/// The name by which the driver of its host calls itself ("megaraid_sas"), else by which the kernel knows it;
/// empty without one. Reads ".../driver" of the adapter besides what is listed below.
std::string ReadScsiHostDriver(const TScsiDevice& device);

/// "host:channel:target:unit" as in its path; empty when the path has none.
std::string FindScsiAddress(const TScsiDevice& device);

/// What these and the position of such a device read besides the attributes in its folder.
inline constexpr std::array<TSourcePattern, 7> scsiSources{
    "/sys/class/scsi_host/*/proc_name",   "/sys/devices/**/*:*:*.*",
    "/sys/devices/**/ata_port/*/port_no", "/sys/devices/**/sas_device/*/sas_address",
    "/sys/devices/**/usb*/version",       "/sys/devices/**/serial",
    "/sys/devices/**/idVendor",
};

}  // namespace NVORHOST
