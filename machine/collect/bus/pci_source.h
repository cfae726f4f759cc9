// The functions on the machine's PCI buses, shared between collectors.
#pragma once

#include "machine/collect/frame/device_names.h"
#include "machine/collect/frame/source_patterns.h"
#include "machine/parse/pci_config.h"
#include "machine/parse/pci_modalias.h"
#include "machine/system/system_files.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

class TCollection;

/// One function, as read from its registers and attributes.
struct TPciSource : TPciNumbers {
    std::string address;               ///< with the domain: "0000:00:1f.2"
    std::string folder;                ///< in /sys/bus/pci/devices, or below /sys/devices
    std::optional<TPciConfig> config;  ///< absent if the registers cannot be read
    bool isExpress = false;            ///< true also if the capability list is unreadable
};

/// Returns every function in the order of addresses. In a captured tree without /sys/bus/pci they are found
/// below /sys/devices/pci*.
std::vector<TPciSource> ReadPciSources(const ISystemFiles& files);

/// The functions of the collection's machine, read at the first call.
const std::vector<TPciSource>& GetPciSources(TCollection& collection);

/// The paths that ReadPciSources may access.
inline constexpr std::array<TSourcePattern, 5> pciSources{
    "/sys/bus/pci/devices", "/sys/bus/pci/devices/*/*", "/sys/bus/pci/devices/*/power/runtime_status",
    "/sys/devices",         "/sys/devices/pci*/**",
};

/// Reads the numbers of the function in `folder` from the kernel's attributes, else from `modalias`; nullopt
/// if vendor, device or class is in neither.
std::optional<TPciNumbers> ReadPciNumbers(const ISystemFiles& files, const std::string& folder);

/// True for header types 1 and 2. The class code decides if the registers cannot be read.
bool IsBridge(const TPciSource& source);

/// Returns the names of vendor and device if `names` has both; else the name of the class and the numbers,
/// with the vendor's name if it is known: "Ethernet controller 8086:100e". `names` may be null.
std::string MakePciElementName(const TPciSource& source, const IDeviceNames* names);

}  // namespace NVORHOST
