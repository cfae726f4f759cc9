// The kernel's view of the PCI slots in the SMBIOS table, by the address that the table gives.
#pragma once

#include "machine/system/system_files.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Maps the address of each folder in /sys/bus/pci/slots, as domain, bus and device ("0000:05:00"), to its
/// path.
std::map<std::string, std::string> ReadPciSlotFolders(const ISystemFiles& files);

/// Returns the address of the function in the slot at `address` ("0000:00:1c.0"). Firmware often gives the
/// address of the port above the slot; the first function below the port is returned then. Returns nullopt if
/// the slot is empty, and for a host bridge, whose address firmware uses as a placeholder.
std::optional<std::string> FindFunctionInSlot(const ISystemFiles& files, std::string_view address);

}  // namespace NVORHOST
