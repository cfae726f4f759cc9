#include "vorhost/names/hardware_database.h"

#include <libudev.h>

#include <cstdio>
#include <string_view>

namespace NVORHOST {

namespace {

constexpr char vendorKey[] = "ID_VENDOR_FROM_DATABASE";
constexpr char modelKey[] = "ID_MODEL_FROM_DATABASE";

// The text that the database's patterns are written for, as the kernel gives it in modalias.
template <typename... TNumbers>
std::string Format(const char* format, TNumbers... numbers) {
    char text[64];
    const int length = std::snprintf(text, sizeof text, format, numbers...);
    return {text, static_cast<std::size_t>(length)};
}

}  // namespace

class THardwareDatabase::TDatabase {
  public:
    TDatabase() : context_(udev_new(), &udev_unref) {
        if (context_) {
            database_.reset(udev_hwdb_new(context_.get()));
        }
    }

    std::optional<std::string> Find(const std::string& modalias, std::string_view key) const {
        if (!database_) {
            return std::nullopt;
        }
        udev_list_entry* entry =
            udev_hwdb_get_properties_list_entry(database_.get(), modalias.c_str(), /*flags=*/0);
        for (; entry != nullptr; entry = udev_list_entry_get_next(entry)) {
            if (udev_list_entry_get_name(entry) == key) {
                return std::string(udev_list_entry_get_value(entry));
            }
        }
        return std::nullopt;
    }

  private:
    struct TCloseDatabase {
        void operator()(udev_hwdb* database) const { udev_hwdb_unref(database); }
    };

    std::unique_ptr<udev, decltype(&udev_unref)> context_;
    std::unique_ptr<udev_hwdb, TCloseDatabase> database_;
};

THardwareDatabase::THardwareDatabase() = default;
THardwareDatabase::~THardwareDatabase() = default;

std::optional<std::string> THardwareDatabase::Find(const std::string& modalias, const char* key) const {
    if (!database_) {
        database_ = std::make_unique<TDatabase>();
    }
    return database_->Find(modalias, key);
}

std::optional<std::string> THardwareDatabase::FindPciVendor(std::uint16_t vendorId) const {
    return Find(Format("pci:v%08X", vendorId), vendorKey);
}

std::optional<std::string> THardwareDatabase::FindPciDevice(std::uint16_t vendorId,
                                                            std::uint16_t deviceId) const {
    return Find(Format("pci:v%08Xd%08X", vendorId, deviceId), modelKey);
}

std::optional<std::string> THardwareDatabase::FindUsbVendor(std::uint16_t vendorId) const {
    return Find(Format("usb:v%04X", vendorId), vendorKey);
}

std::optional<std::string> THardwareDatabase::FindUsbDevice(std::uint16_t vendorId,
                                                            std::uint16_t productId) const {
    return Find(Format("usb:v%04Xp%04X", vendorId, productId), modelKey);
}

}  // namespace NVORHOST
