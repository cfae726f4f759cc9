// Positions of devices, in words that do not change when the kernel renumbers its hosts, buses and links.
#pragma once

#include "machine/system/system_files.h"

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Returns the folder below /sys/devices for the entry of a class, such as "/sys/block/sda": the target of
/// the entry or, on old kernels whose entries are folders, the target of its "device" link with the entry's
/// name appended. Returns nullopt if neither is a link.
std::optional<std::string> FindEntryDevice(const ISystemFiles& files, const std::string& entry);

/// Returns the position of a device from its folder below /sys/devices: the address of its PCI function, then
/// the ports on the path, joined by "/": "0000:00:1f.2/ata-1/0:0:0", "0000:00:14.0/usb2/2:1.0/0:0:1",
/// "0000:01:00.0/n1". The last name of the path, the kernel's name for the device, contributes only the name
/// space number of NVMe. Returns nullopt if the path has no lasting part.
std::optional<std::string> ReadDevicePosition(const ISystemFiles& files, std::string_view devicePath);

/// Returns the position of the device of a class entry; the entry's own name if the position is unknown.
std::string ReadEntryPosition(const ISystemFiles& files, const std::string& entry);

/// The address of the last PCI function on the way to a device, "0000:01:00.0"; nullopt if there is none.
std::optional<std::string> FindPciFunction(std::string_view devicePath);

}  // namespace NVORHOST
