// Device names from the system's hardware database (hwdb), which is made from pci.ids and usb.ids.
#pragma once

#include "machine/collect/frame/device_names.h"

#include <memory>
#include <string>
#include <unordered_map>

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

    TDeviceName FindPci(const TPciNumbers& numbers) const override;
    TDeviceName FindUsb(std::uint16_t vendorId, std::uint16_t productId) const override;

  private:
    class TDatabase;

    TDeviceName Find(const std::string& modalias) const;

    mutable std::unique_ptr<TDatabase> database_;  // opened by the first question
    // Each search walks the database; several classes ask for the same devices, and machines have many alike.
    mutable std::unordered_map<std::string, TDeviceName> found_;
};

}  // namespace NVORHOST
