// The functions on the machine's PCI buses as several collectors need them, read once.
#pragma once

#include "vorhost/collect/device_names.h"
#include "vorhost/parse/pci_config.h"
#include "vorhost/system/system_files.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

/// What is known of a function before it becomes instances.
struct TPciSource {
    std::string address;               ///< with its domain, "0000:00:1f.2"
    std::string folder;                ///< below /sys/bus/pci/devices
    std::optional<TPciConfig> config;  ///< absent when the registers cannot be read
    std::uint16_t vendorId = 0;
    std::uint16_t deviceId = 0;
    std::uint8_t baseClass = 0;
    std::uint8_t subclass = 0;
    std::uint8_t programmingInterface = 0;
    bool isExpress = false;  ///< is, or may be, PCI Express rather than PCI
};

/// Every function in the order of their addresses.
std::vector<TPciSource> ReadPciSources(const ISystemFiles& files);

/// True for header types 1 and 2; without registers the class decides.
bool IsBridge(const TPciSource& source);

/// Vendor and device by name where `names` has both, else the class in words and the numbers: "Ethernet
/// controller 8086:100e". `names` may be null.
std::string MakePciElementName(const TPciSource& source, const IDeviceNames* names);

}  // namespace NVORHOST
