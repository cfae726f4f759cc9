// Device names from a database. Devices hold numbers only, and a collection also works without a database.
// Names are never part of a key, because databases change.
#pragma once

#include "machine/parse/pci_modalias.h"

#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

struct TDeviceName {
    std::optional<std::string> vendor;  ///< absent if the database does not list the vendor
    /// Without the vendor's name; "chip (card)" for a PCI card that is listed. Absent if the device is not
    /// listed.
    std::optional<std::string> device;
};

class IDeviceNames {
  public:
    virtual ~IDeviceNames() = default;

    virtual TDeviceName FindPci(const TPciNumbers& numbers) const = 0;
    virtual TDeviceName FindUsb(std::uint16_t vendorId, std::uint16_t productId) const = 0;
};

}  // namespace NVORHOST
