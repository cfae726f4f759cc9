// Attributes of SCSI devices: disks, tape and optical drives, and everything that the kernel presents as SCSI
// (ATA, SAS, USB, volumes of RAID adapters, disks of hypervisors).
#pragma once

#include "machine/collect/frame/source_patterns.h"
#include "machine/system/system_files.h"

#include <array>
#include <optional>
#include <string>

namespace NVORHOST {

struct TScsiDevice {
    const ISystemFiles& files;
    std::string folder;  ///< folder of the attributes: "/sys/block/sda/device"
    /// Path of the node below /sys/devices: ".../0:0:0:0/block/sda"; absent in a tree without links.
    std::optional<std::string> devicePath;
};

/// Returns the device of the class entry `entry`, such as "/sys/block/sr0".
TScsiDevice FindScsiDevice(const ISystemFiles& files, const std::string& entry);

/// Returns vendor and model as one text, for ATA disks the whole model name; nullopt if the device reports
/// neither.
std::optional<std::string> ReadScsiModel(const TScsiDevice& device);

/// Returns the world-wide name, else the serial number; nullopt if the device has neither.
std::optional<std::string> ReadScsiIdentity(const TScsiDevice& device);

/// Returns the world-wide name, "naa.5000c500a1b2c3d4"; nullopt if the device has none of its own.
std::optional<std::string> ReadScsiWorldWideName(const TScsiDevice& device);

/// Returns the serial number of the device, else that of the USB device that provides it; nullopt if both are
/// unknown.
std::optional<std::string> ReadScsiSerial(const TScsiDevice& device);

/// Returns "USB", "ATA", "SAS", "iSCSI" or "SCSI".
std::string FindScsiTransport(const TScsiDevice& device);

/// Returns the folder of the USB device that provides the SCSI device; nullopt for other transports.
std::optional<std::string> FindUsbDeviceFolder(const TScsiDevice& device);

/// Returns the folder of the ATA port, ".../ata1"; nullopt for other transports.
std::optional<std::string> FindAtaPortFolder(const TScsiDevice& device);

/// Returns the folder of the SAS end device; nullopt for other transports.
std::optional<std::string> FindSasDeviceFolder(const TScsiDevice& device);

/// Returns the name that the driver gives its host ("megaraid_sas"), else the name of the adapter's driver;
/// nullopt if both are unknown. Also reads the "driver" link of the adapter, which is not in scsiSources.
std::optional<std::string> ReadScsiHostDriver(const TScsiDevice& device);

/// Returns "host:channel:target:unit" from the path; nullopt if the path has no such address.
std::optional<std::string> FindScsiAddress(const TScsiDevice& device);

/// The paths that these functions and ReadDevicePosition may access, besides attributes in the device's
/// folder.
inline constexpr std::array<TSourcePattern, 7> scsiSources{
    "/sys/class/scsi_host/*/proc_name",   "/sys/devices/**/*:*:*.*",
    "/sys/devices/**/ata_port/*/port_no", "/sys/devices/**/sas_device/*/sas_address",
    "/sys/devices/**/usb*/version",       "/sys/devices/**/serial",
    "/sys/devices/**/idVendor",
};

}  // namespace NVORHOST
