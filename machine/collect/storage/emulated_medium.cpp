#include "machine/collect/storage/emulated_medium.h"

#include "machine/collect/frame/attribute.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace NVORHOST {
namespace {

// Parts of "vendor model", each at the start of a word. The name of a controller alone is listed only if the
// vendor uses it for images exclusively, because an SD card in a slot of the controller is a physical medium.
constexpr std::string_view emulatedModels[] = {
    "Virtual CD",
    "Virtual DVD",
    "Virtual Disc",
    "Virtual Disk",
    "Virtual FD",
    "Virtual Floppy",
    "Virtual HD",
    "Virtual Media",
    "Virtual USB",
    "iDRAC",           // "LCDRIVE", "OEMDRV", "SECUPD" and the virtual drives
    "iLO LUN",         // "iLO LUN 00 Media 0": flash memory of the controller
    "CIMC-Mapped v",   // "vDVD", "vHDD", "vFDD" of images on the network
    "vKVM-Mapped v",   // images that the console sends
    "File-CD Gadget",  // defaults of the Linux gadget driver, which runs on many controllers
    "File-Stor Gadget",
};

// Vendors whose USB devices are management controllers, consoles and parts of these, without physical media.
constexpr std::uint16_t managementVendors[] = {
    0x046B,  // American Megatrends
    0x0557,  // ATEN
    0x0624,  // Avocent
    0x14DD,  // Raritan
};

bool HasWordsOf(std::string_view model, std::string_view words) {
    for (auto place = model.find(words); place != std::string_view::npos;
         place = model.find(words, place + 1)) {
        if (place == 0 || model[place - 1] == ' ') {
            return true;
        }
    }
    return false;
}

bool IsManagementVendor(const ISystemFiles& files, const std::string& usbDevice) {
    const auto vendorId = ReadHexNumber<std::uint16_t>(files, usbDevice + "/idVendor");
    return vendorId && std::ranges::find(managementVendors, *vendorId) != std::end(managementVendors);
}

}  // namespace

bool IsEmulatedMedium(const TScsiDevice& device, const std::optional<std::string>& model) {
    const auto usbDevice = FindUsbDeviceFolder(device);
    if (!usbDevice && device.devicePath) {
        return false;
    }
    const auto isModel = [&](std::string_view words) { return model && HasWordsOf(*model, words); };
    return std::any_of(std::begin(emulatedModels), std::end(emulatedModels), isModel) ||
           (usbDevice && IsManagementVendor(device.files, *usbDevice));
}

}  // namespace NVORHOST
