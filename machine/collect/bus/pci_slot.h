// What the kernel knows of a slot on a PCI bus, found by the address that the firmware gives for it.
#pragma once

#include "machine/system/system_files.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// The folders of /sys/bus/pci/slots by the address in each, domain, bus and device: "0000:05:00".
std::map<std::string, std::string> ReadPciSlotFolders(const ISystemFiles& files);

/// The address of the function in the slot at `address` ("0000:00:1c.0"): that function itself, or, as
/// firmware often gives the port that the slot hangs on, the first one behind it. Absent when nothing is
/// there, when the port leads nowhere, and for a host bridge, whose address stands where firmware knows none.
std::optional<std::string> FindFunctionInSlot(const ISystemFiles& files, std::string_view address);

}  // namespace NVORHOST
