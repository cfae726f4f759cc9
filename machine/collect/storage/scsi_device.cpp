#include "machine/collect/storage/scsi_device.h"

#include "machine/collect/frame/attribute.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/scsi_vpd.h"
#include "text/numbers.h"

#include <algorithm>
#include <string_view>

namespace NVORHOST {
namespace {

constexpr std::size_t maxVpdBytes = std::size_t{1} << 16;

std::optional<std::string> Read(const TScsiDevice& device, std::string_view attribute) {
    return ReadAttribute(device.files, device.folder + "/" + std::string(attribute));
}

std::string ReadPage(const TScsiDevice& device, std::string_view page) {
    return device.files.ReadBytes(device.folder + "/" + std::string(page), maxVpdBytes).value;
}

std::string Join(const std::optional<std::string>& first, const std::optional<std::string>& second) {
    std::string joined = first.value_or("");
    if (second) {
        joined += (joined.empty() ? "" : " ") + *second;
    }
    return joined;
}

std::optional<std::string> NonEmpty(std::string text) {
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

// The folder of the path whose name satisfies `matches`, counted from the end; empty when none does.
template <typename TMatches>
std::string_view FindFolder(std::string_view path, TMatches matches) {
    while (!path.empty()) {
        const auto slash = path.rfind('/');
        if (matches(path.substr(slash + 1))) {
            return path;
        }
        path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
    }
    return {};
}

bool IsHostName(std::string_view name) {
    return name.starts_with("host") && ParseNumber<std::uint32_t>(name.substr(4)).has_value();
}

// "1-2.3", not an interface "1-2.3:1.0".
bool IsUsbDeviceName(std::string_view name) {
    const auto dash = name.find('-');
    return dash != std::string_view::npos && ParseNumber<std::uint32_t>(name.substr(0, dash)) &&
           name.find(':') == std::string_view::npos;
}

bool IsScsiAddress(std::string_view name) {
    return std::count(name.begin(), name.end(), ':') == 3;
}

// The logical unit, for devices that have several of them behind one serial number.
std::string UnitSuffix(const TScsiDevice& device) {
    const std::string address = FindScsiAddress(device);
    const std::string unit = address.substr(address.rfind(':') + 1);
    return address.empty() || unit == "0" ? "" : "-" + unit;
}

std::string ReadUsbSerial(const TScsiDevice& device) {
    const std::string usbDevice = FindUsbDeviceFolder(device);
    if (usbDevice.empty()) {
        return {};
    }
    auto serial = ReadAttribute(device.files, usbDevice + "/serial");
    serial = WithoutPlaceholder(std::move(serial));
    return serial ? *serial + UnitSuffix(device) : "";
}

}  // namespace

std::optional<std::string> ReadScsiModel(const TScsiDevice& device) {
    if (auto model = ParseVpdAtaModel(ReadPage(device, "vpd_pg83"))) {
        return model;
    }
    const auto vendor = Read(device, "vendor");
    const auto model = Read(device, "model");
    const bool saysVendorTwice = vendor && model && model->starts_with(*vendor + " ");
    // "ATA" stands for the vendor of every ATA disk.
    return NonEmpty(Join(vendor == "ATA" || saysVendorTwice ? std::nullopt : vendor, model));
}

std::string ReadScsiIdentity(const TScsiDevice& device) {
    const auto wwid = Read(device, "wwid");
    // "t10." is the vendor's and model's names with the serial number, which follows below by itself.
    if (wwid && (wwid->starts_with("naa.") || wwid->starts_with("eui.")) && !IsPlaceholder(wwid->substr(4))) {
        return *wwid;
    }
    const auto serial = WithoutPlaceholder(ParseVpdSerial(ReadPage(device, "vpd_pg80")));
    return serial ? *serial : ReadUsbSerial(device);
}

std::string FindScsiTransport(const TScsiDevice& device) {
    struct TRow {
        std::string_view part;
        std::string_view transport;
    };
    constexpr TRow rows[] = {
        {"/usb", "USB"},
        {"/ata", "ATA"},
        {"/end_device-", "SAS"},
        {"/session", "iSCSI"},
    };
    for (const TRow& row : rows) {
        if (device.devicePath.find(row.part) != std::string::npos) {
            return std::string(row.transport);
        }
    }
    // Kernels before 2.6.39 had no folder for the link.
    return Read(device, "vendor") == "ATA" ? "ATA" : "SCSI";
}

std::string FindUsbDeviceFolder(const TScsiDevice& device) {
    return std::string(FindFolder(device.devicePath, IsUsbDeviceName));
}

std::string ReadScsiHostDriver(const TScsiDevice& device) {
    const auto host = FindFolder(device.devicePath, IsHostName);
    if (host.empty()) {
        return {};
    }
    const std::string name(host.substr(host.rfind('/') + 1));
    const auto driver = ReadAttribute(device.files, "/sys/class/scsi_host/" + name + "/proc_name");
    if (driver && *driver != "(null)" && *driver != "<NULL>") {
        return *driver;
    }
    // Drivers need no such name, and trees may lack the class: the adapter's driver is the host's.
    const std::string adapter(host.substr(0, host.rfind('/')));
    return ReadLinkedName(device.files, adapter + "/driver").value_or("");
}

std::string FindScsiAddress(const TScsiDevice& device) {
    const auto folder = FindFolder(device.devicePath, IsScsiAddress);
    return std::string(folder.substr(folder.rfind('/') + 1));
}

}  // namespace NVORHOST
