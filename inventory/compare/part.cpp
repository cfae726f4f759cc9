#include "inventory/compare/part.h"

#include <algorithm>
#include <iterator>

namespace NINVENTORY {
namespace {

using TNames = std::span<const std::string_view>;

constexpr std::string_view tag[] = {"Tag"};
constexpr std::string_view deviceId[] = {"DeviceID"};
constexpr std::string_view location[] = {"Location"};
constexpr std::string_view pciFunction[] = {"PCI function", "USB port path"};
// The first of these that a drive has is the one that people look for.
constexpr std::string_view drivePlace[] = {
    "Enclosure slot", "SAS bay",        "ATA port",      "SAS phy",   "USB port path",
    "PCI function",   "NVMe namespace", "SAS enclosure", "Enclosure", "Enclosure slot number",
};
constexpr std::string_view link[] = {"Antecedent", "Dependent"};

constexpr std::string_view serialNumber[] = {"SerialNumber", "Serial number"};
constexpr std::string_view driveSerial[] = {"World-wide name", "Serial number", "SerialNumber"};
constexpr std::string_view uniqueId[] = {"UniqueID"};
constexpr std::string_view hardwareAddress[] = {"PermanentAddress"};
constexpr std::string_view address[] = {"IPv4Address", "IPv6Address"};

constexpr std::string_view pciKind[] = {"ClassCode", "SubsystemVendorID", "SubsystemID", "Description"};

constexpr bool isSingleton = true;
constexpr bool isMany = false;
constexpr bool isFirmware = true;
constexpr bool isAuxiliary = true;

// clang-format off
constexpr TPartType partTypes[] = {
    {"",                   {},          serialNumber},
    {"BIOSElement",        {},          {},              {},      isMany,      isFirmware},
    {"BasedOn",            link,        {},              {},      isMany,      !isFirmware, isAuxiliary},
    {"CADAT",              {},          {},              {},      isMany,      !isFirmware, isAuxiliary},
    {"CacheMemory",        deviceId,    {}},
    {"Card",               tag,         serialNumber},
    {"Chassis",            tag,         serialNumber},
    {"DataSource",         {},          {},              {},      isMany,      !isFirmware, isAuxiliary},
    {"DeviceSAPImplementation", link,   {},              {},      isMany,      !isFirmware, isAuxiliary},
    {"DiskDrive",          drivePlace,  driveSerial},
    {"DisketteDrive",      drivePlace,  driveSerial},
    {"DisplayController",  deviceId,    {},              pciKind},
    {"ElementInConnector", link,        {},              {},      isMany,      !isFirmware, isAuxiliary},
    {"EthernetPort",       pciFunction, hardwareAddress},
    {"IBPort",             pciFunction, hardwareAddress},
    {"IDEController",      deviceId,    {},              pciKind},
    {"IPProtocolEndpoint", {},          address},
    {"NOXSystemInfo",      {},          {},              {},      isSingleton},
    {"NetworkPort",        {},          {}},
    {"OperatingSystem",    {},          {},              {},      isSingleton},
    {"OpticalDrive",       drivePlace,  driveSerial},
    {"PCIBridge",          deviceId,    {},              pciKind},
    {"PCIDevice",          deviceId,    {},              pciKind},
    {"PhysicalMemory",     tag,         serialNumber},
    {"PowerSupply",        location,    serialNumber},
    {"Process",            {},          {},              {},      isMany,      !isFirmware, isAuxiliary},
    {"Processor",          deviceId,    uniqueId},
    {"ResidesOnExtent",    link,        {},              {},      isMany,      !isFirmware, isAuxiliary},
    {"Server",             {},          {},              {},      isSingleton},
    {"SoftwareElement",    {},          {},              {},      isMany,      isFirmware},
    {"TapeDrive",          drivePlace,  driveSerial},
    {"USBController",      deviceId,    {},              pciKind},
    {"WiFiPort",           pciFunction, hardwareAddress},
};
// clang-format on

std::string Join(const std::vector<std::string>& values) {
    std::string joined;
    for (const std::string& value : values) {
        joined += (joined.empty() ? "" : ", ") + value;
    }
    return joined;
}

std::string FindEntry(const TResource& resource, std::string_view name) {
    const TProperty* const info = resource.Find("OtherIdentifyingInfo");
    const TProperty* const names = resource.Find("IdentifyingDescriptions");
    if (info == nullptr || names == nullptr || info->values.size() != names->values.size()) {
        return {};
    }
    const auto entry = std::ranges::find(names->values, name);
    return entry == names->values.end()
               ? std::string()
               : info->values[static_cast<std::size_t>(entry - names->values.begin())];
}

}  // namespace

const TPartType& GetPartType(std::string_view type) {
    const auto* const row = std::ranges::find(partTypes, type, &TPartType::type);
    return row == std::end(partTypes) ? partTypes[0] : *row;
}

std::string GetFact(const TResource& resource, std::string_view name) {
    const TProperty* const property = resource.Find(name);
    return property != nullptr ? Join(property->values) : FindEntry(resource, name);
}

std::vector<std::string_view> ListEntries(const TResource& resource) {
    const TProperty* const info = resource.Find("OtherIdentifyingInfo");
    const TProperty* const names = resource.Find("IdentifyingDescriptions");
    if (info == nullptr || names == nullptr || info->values.size() != names->values.size()) {
        return {};
    }
    return {names->values.begin(), names->values.end()};
}

std::vector<TFact> GetFacts(const TResource& resource, TNames names, const TIsIgnored& isIgnored) {
    std::vector<TFact> facts;
    for (const std::string_view name : names) {
        std::string value = isIgnored(name) ? std::string() : GetFact(resource, name);
        if (!value.empty()) {
            facts.push_back({name, std::move(value)});
        }
    }
    return facts;
}

bool AreDifferentParts(const TPartType& type, const TResource& left, const TResource& right,
                       const TIsIgnored& isIgnored) {
    bool isComparable = false;
    const auto differ = [&](std::string_view name) {
        const std::string leftValue = isIgnored(name) ? std::string() : GetFact(left, name);
        const std::string rightValue = leftValue.empty() ? std::string() : GetFact(right, name);
        isComparable = isComparable || !rightValue.empty();
        return !rightValue.empty() && leftValue != rightValue;
    };
    const auto differences = std::ranges::count_if(type.serials, differ);
    if (isComparable) {
        // One serial number in common is enough: firmware may report another one in another form.
        const auto agree = [&](std::string_view name) {
            const std::string value = isIgnored(name) ? std::string() : GetFact(left, name);
            return !value.empty() && value == GetFact(right, name);
        };
        return differences > 0 && std::ranges::none_of(type.serials, agree);
    }
    return std::ranges::any_of(type.kinds, differ);
}

}  // namespace NINVENTORY
