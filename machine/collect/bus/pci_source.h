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

/// What is known of a function before it becomes instances.
struct TPciSource : TPciNumbers {
    std::string address;               ///< with its domain, "0000:00:1f.2"
    std::string folder;                ///< below /sys/bus/pci/devices, else below /sys/devices
    std::optional<TPciConfig> config;  ///< absent when the registers cannot be read
    bool isExpress = false;            ///< is, or may be, PCI Express rather than PCI
};

/// Every function in the order of their addresses. A captured tree without /sys/bus/pci has them below
/// /sys/devices/pci*.
std::vector<TPciSource> ReadPciSources(const ISystemFiles& files);

/// The functions of the collection's machine, read at the first call.
const std::vector<TPciSource>& GetPciSources(TCollection& collection);

/// What that reads.
inline constexpr std::array<TSourcePattern, 4> pciSources{
    "/sys/bus/pci/devices",
    "/sys/bus/pci/devices/*/*",
    "/sys/devices",
    "/sys/devices/pci*/**",
};

/// The numbers of the function in `folder` from what the kernel keeps of them: one attribute each, else
/// `modalias`. Absent when vendor, device or class is missing from both.
std::optional<TPciNumbers> ReadPciNumbers(const ISystemFiles& files, const std::string& folder);

/// True for header types 1 and 2; without registers the class decides.
bool IsBridge(const TPciSource& source);

/// Vendor and device by name where `names` has both, a card by its chip and its own name; else the class in
/// words and the numbers: "Ethernet controller 8086:100e". `names` may be null.
std::string MakePciElementName(const TPciSource& source, const IDeviceNames* names);

}  // namespace NVORHOST
