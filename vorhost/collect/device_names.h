// Names that people know devices by. The numbers stand in the devices, the names in a database; a collection
// works without one. Names never enter a key: databases change.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

class IDeviceNames {
  public:
    virtual ~IDeviceNames() = default;

    /// Absent when the database does not list the vendor.
    virtual std::optional<std::string> FindPciVendor(std::uint16_t vendorId) const = 0;
    /// The name of the device alone, without its vendor's. Absent when the database does not list it.
    virtual std::optional<std::string> FindPciDevice(std::uint16_t vendorId,
                                                     std::uint16_t deviceId) const = 0;
    virtual std::optional<std::string> FindUsbVendor(std::uint16_t vendorId) const = 0;
    virtual std::optional<std::string> FindUsbDevice(std::uint16_t vendorId,
                                                     std::uint16_t productId) const = 0;
};

}  // namespace NVORHOST
