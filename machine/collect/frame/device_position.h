// Where a device sits, in words that stay the same when the kernel numbers its hosts, buses and links anew.
#pragma once

#include "machine/system/system_files.h"
#include "os/path_walk.h"

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// The folder below /sys/devices that the entry of a class leads to ("/sys/block/sda"). Kernels that have
/// folders there link the device inside. Empty without links.
std::string FindEntryDevice(const ISystemFiles& files, const std::string& entry);

/// The position of a device from its folder below /sys/devices: the address of the PCI function it hangs on,
/// then the ports on the way, parts joined by "/": "0000:00:1f.2/ata-1/0:0:0",
/// "0000:00:14.0/usb2/2:1.0/0:0:1", "0000:01:00.0/n1". The last name of the path, the kernel's own name for
/// the device, is left out but for the name space number of NVMe. Empty when nothing on the way tells where.
std::string ReadDevicePosition(const ISystemFiles& files, std::string_view devicePath);

/// The address of the last PCI function on the way to a device, "0000:01:00.0"; nullopt if there is none.
std::optional<std::string> FindPciFunction(std::string_view devicePath);

}  // namespace NVORHOST
