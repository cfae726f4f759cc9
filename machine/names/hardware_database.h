// Device names from the system's hardware database (hwdb), which is made from pci.ids and usb.ids.
#pragma once

#include "machine/collect/frame/device_names.h"

#include <memory>
#include <string>
#include <unordered_map>

struct udev;
struct udev_hwdb;

namespace NVORHOST {

/// Opens the database at the first search. A system without a database has no names.
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

    mutable std::unique_ptr<TDatabase> database_;  // opened at the first search
    // A cache: a search walks the database, several classes search for the same devices, and machines have
    // many equal ones.
    mutable std::unordered_map<std::string, TDeviceName> found_;
};

}  // namespace NVORHOST
