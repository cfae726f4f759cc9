// Device names from the system's hardware database (hwdb), which is made from pci.ids and usb.ids.
#pragma once

#include "vorhost/collect/device_names.h"

#include <memory>

struct udev;
struct udev_hwdb;

namespace NVORHOST {

/// Opens the database with the first question; a system without one has no names.
class THardwareDatabase final : public IDeviceNames {
  public:
    THardwareDatabase();
    ~THardwareDatabase() override;
    THardwareDatabase(const THardwareDatabase&) = delete;
    THardwareDatabase& operator=(const THardwareDatabase&) = delete;

    std::optional<std::string> FindPciVendor(std::uint16_t vendorId) const override;
    std::optional<std::string> FindPciDevice(std::uint16_t vendorId, std::uint16_t deviceId) const override;
    std::optional<std::string> FindUsbVendor(std::uint16_t vendorId) const override;
    std::optional<std::string> FindUsbDevice(std::uint16_t vendorId, std::uint16_t productId) const override;

  private:
    class TDatabase;

    std::optional<std::string> Find(const std::string& modalias, const char* key) const;

    mutable std::unique_ptr<TDatabase> database_;  // opened by the first question
};

}  // namespace NVORHOST
