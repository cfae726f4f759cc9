// Names that people know devices by. The numbers stand in the devices, the names in a database; a collection
// works without one. Names never enter a key: databases change.
#pragma once

#include "machine/parse/pci_modalias.h"

#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

struct TDeviceName {
    std::optional<std::string> vendor;  ///< absent when the database does not list the vendor
    /// Without the vendor's name; of a PCI card that is listed, "chip (card)". Absent when it is not listed.
    std::optional<std::string> device;
};

class IDeviceNames {
  public:
    virtual ~IDeviceNames() = default;

    virtual TDeviceName FindPci(const TPciNumbers& numbers) const = 0;
    virtual TDeviceName FindUsb(std::uint16_t vendorId, std::uint16_t productId) const = 0;
};

}  // namespace NVORHOST
