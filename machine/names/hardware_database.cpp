#include "machine/names/hardware_database.h"

#include "machine/system/system_files.h"

#include <libudev.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string_view>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr std::string_view vendorKey = "ID_VENDOR_FROM_DATABASE";
constexpr std::string_view modelKey = "ID_MODEL_FROM_DATABASE";

// Returns the text of the attribute `modalias`, for which the patterns of the database are written.
std::string MakeUsbModalias(std::uint16_t vendorId, std::uint16_t productId) {
    char text[32];
    const int length = std::snprintf(text, sizeof text, "usb:v%04Xp%04X", static_cast<unsigned>(vendorId),
                                     static_cast<unsigned>(productId));
    return {text, static_cast<std::size_t>(std::max(length, 0))};
}

}  // namespace

class THardwareDatabase::TDatabase {
  public:
    TDatabase() : context_(udev_new(), &udev_unref) {
        if (context_) {
            errno = 0;
            database_.reset(udev_hwdb_new(context_.get()));
        }
        if (!database_ && IsExhaustion(errno)) {
            throw TResourcesExhausted("the hardware database: " + std::generic_category().message(errno));
        }
    }

    // The entry of the vendor matches every device of it, so one search finds both names.
    TDeviceName Find(const std::string& modalias) const {
        TDeviceName name;
        if (!database_) {
            return name;
        }
        udev_list_entry* entry =
            udev_hwdb_get_properties_list_entry(database_.get(), modalias.c_str(), /*flags=*/0);
        for (; entry != nullptr; entry = udev_list_entry_get_next(entry)) {
            const std::string_view key = udev_list_entry_get_name(entry);
            if (key == vendorKey) {
                name.vendor = udev_list_entry_get_value(entry);
            } else if (key == modelKey) {
                name.device = udev_list_entry_get_value(entry);
            }
        }
        return name;
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

TDeviceName THardwareDatabase::Find(const std::string& modalias) const {
    const auto [place, isNew] = found_.try_emplace(modalias);
    if (isNew) {
        if (!database_) {
            database_ = std::make_unique<TDatabase>();
        }
        place->second = database_->Find(modalias);
    }
    return place->second;
}

// Cards have entries by subsystem, so the search uses the whole text.
TDeviceName THardwareDatabase::FindPci(const TPciNumbers& numbers) const {
    return Find(MakePciModalias(numbers));
}

TDeviceName THardwareDatabase::FindUsb(std::uint16_t vendorId, std::uint16_t productId) const {
    return Find(MakeUsbModalias(vendorId, productId));
}

}  // namespace NVORHOST
