#include "machine/collect/storage/scsi_device.h"

#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/frame/kernel_name.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/scsi_vpd.h"
#include "text/non_empty.h"
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

std::string_view LastName(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

// Returns the deepest folder on the path whose name satisfies `matches`; nullopt if none does.
template <typename TMatches>
std::optional<std::string_view> FindFolder(std::string_view path, TMatches matches) {
    while (!path.empty()) {
        const auto slash = path.rfind('/');
        if (matches(path.substr(slash + 1))) {
            return path;
        }
        path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
    }
    return std::nullopt;
}

bool IsHostName(std::string_view name) {
    return FindNumberAfter(name, "host").has_value();
}

// True for a device, "1-2.3", but not for an interface, "1-2.3:1.0".
bool IsUsbDeviceName(std::string_view name) {
    const auto dash = name.find('-');
    return dash != std::string_view::npos && ParseNumber<std::uint32_t>(name.substr(0, dash)) &&
           name.find(':') == std::string_view::npos;
}

bool IsScsiAddress(std::string_view name) {
    return std::count(name.begin(), name.end(), ':') == 3;
}

// Distinguishes logical units of one USB device, which share its serial number.
std::string UnitSuffix(const TScsiDevice& device) {
    const auto address = FindScsiAddress(device);
    if (!address) {
        return "";
    }
    const std::string unit = address->substr(address->rfind(':') + 1);
    return unit == "0" ? "" : "-" + unit;
}

std::optional<std::string> ReadUsbSerial(const TScsiDevice& device) {
    const auto usbDevice = FindUsbDeviceFolder(device);
    return usbDevice ? WithoutPlaceholder(ReadAttribute(device.files, *usbDevice + "/serial")) : std::nullopt;
}

std::optional<std::string> ReadPageSerial(const TScsiDevice& device) {
    return WithoutPlaceholder(ParseVpdSerial(ReadPage(device, "vpd_pg80")));
}

bool IsAtaPortName(std::string_view name) {
    return FindNumberAfter(name, "ata").has_value();
}

bool IsSasDeviceName(std::string_view name) {
    return name.starts_with("end_device-");
}

std::optional<std::string> ToText(std::optional<std::string_view> path) {
    return path ? std::optional<std::string>(*path) : std::nullopt;
}

std::string_view PathOf(const TScsiDevice& device) {
    return device.devicePath ? std::string_view(*device.devicePath) : std::string_view();
}

struct TTransport {
    std::string_view part;  // part of a device path that identifies the transport
    std::string_view name;
};

constexpr TTransport transports[] = {
    {"/usb", "USB"},
    {"/ata", "ATA"},
    {"/end_device-", "SAS"},
    {"/session", "iSCSI"},
};

}  // namespace

TScsiDevice FindScsiDevice(const ISystemFiles& files, const std::string& entry) {
    return {files, entry + "/device", FindEntryDevice(files, entry)};
}

std::optional<std::string> ReadScsiModel(const TScsiDevice& device) {
    if (auto model = ParseVpdAtaModel(ReadPage(device, "vpd_pg83"))) {
        return model;
    }
    const auto vendor = Read(device, "vendor");
    const auto model = Read(device, "model");
    const bool modelHasVendor = vendor && model && model->starts_with(*vendor + " ");
    // "ATA" is the vendor field of every ATA disk.
    return NonEmpty(Join(vendor == "ATA" || modelHasVendor ? std::nullopt : vendor, model));
}

std::optional<std::string> ReadScsiWorldWideName(const TScsiDevice& device) {
    const auto wwid = Read(device, "wwid");
    // A "t10." name contains vendor, model and serial number.
    const bool isOwn = wwid && (wwid->starts_with("naa.") || wwid->starts_with("eui."));
    return isOwn && !IsPlaceholder(wwid->substr(4)) ? wwid : std::nullopt;
}

std::optional<std::string> ReadScsiSerial(const TScsiDevice& device) {
    const auto serial = ReadPageSerial(device);
    return serial ? serial : ReadUsbSerial(device);
}

std::optional<std::string> ReadScsiIdentity(const TScsiDevice& device) {
    if (auto name = ReadScsiWorldWideName(device)) {
        return name;
    }
    if (auto serial = ReadPageSerial(device)) {
        return serial;
    }
    const auto serial = ReadUsbSerial(device);
    return serial ? std::optional(*serial + UnitSuffix(device)) : std::nullopt;
}

std::string FindScsiTransport(const TScsiDevice& device) {
    for (const TTransport& row : transports) {
        if (PathOf(device).find(row.part) != std::string_view::npos) {
            return std::string(row.name);
        }
    }
    // Before Linux 2.6.39 the path of an ATA disk has no folder for the link.
    return Read(device, "vendor") == "ATA" ? "ATA" : "SCSI";
}

std::optional<std::string> FindUsbDeviceFolder(const TScsiDevice& device) {
    return ToText(FindFolder(PathOf(device), IsUsbDeviceName));
}

std::optional<std::string> FindAtaPortFolder(const TScsiDevice& device) {
    return ToText(FindFolder(PathOf(device), IsAtaPortName));
}

std::optional<std::string> FindSasDeviceFolder(const TScsiDevice& device) {
    return ToText(FindFolder(PathOf(device), IsSasDeviceName));
}

std::optional<std::string> ReadScsiHostDriver(const TScsiDevice& device) {
    const auto host = FindFolder(PathOf(device), IsHostName);
    if (!host) {
        return std::nullopt;
    }
    const std::string name(LastName(*host));
    auto driver = ReadAttribute(device.files, "/sys/class/scsi_host/" + name + "/proc_name");
    if (driver && *driver != "(null)" && *driver != "<NULL>") {
        return driver;
    }
    // The name is optional, and captured trees may lack the class. Fall back to the adapter's driver.
    const std::string adapter(host->substr(0, host->rfind('/')));
    return ReadLinkedName(device.files, adapter + "/driver");
}

std::optional<std::string> FindScsiAddress(const TScsiDevice& device) {
    const auto folder = FindFolder(PathOf(device), IsScsiAddress);
    return folder ? std::optional<std::string>(LastName(*folder)) : std::nullopt;
}

}  // namespace NVORHOST
