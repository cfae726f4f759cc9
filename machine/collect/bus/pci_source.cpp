#include "machine/collect/bus/pci_source.h"

#include "machine/collect/bus/pci_class_name.h"
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "text/hex.h"
#include "text/lines.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace NVORHOST {
namespace {

constexpr std::string_view functionsFolder = "/sys/bus/pci/devices";
constexpr std::string_view devicesFolder = "/sys/devices";

bool IsBridgeHeader(const TPciConfig& config) {
    return config.header != EPciHeader::device;
}

// Every register costs a trap on a virtual machine, so only the header is read. Bridges are the exception:
// their capabilities determine the kind of bridge.
std::optional<TPciConfig> ReadConfig(const ISystemFiles& files, const std::string& path) {
    auto config = ParsePciConfig(files.ReadBytes(path, pciHeaderBytes).value);
    if (config && config->HasCapabilities() && IsBridgeHeader(*config)) {
        config = ParsePciConfig(files.ReadBytes(path, pciConfigBytes).value);
    }
    return config;
}

// The kernel shows the link speed of PCI Express functions (since 4.13), so a function without it is a PCI
// function if the kernel is new enough to show `ari_enabled` (since 4.15). On older kernels the capability
// decides; it counts as present if the user may not read it.
bool IsExpress(const ISystemFiles& files, const TPciSource& source) {
    if (!source.config) {
        return false;
    }
    if (source.config->expressPortType || files.Exists(source.folder + "/max_link_speed")) {
        return true;
    }
    if (!source.config->HasCapabilities() || files.Exists(source.folder + "/ari_enabled")) {
        return false;
    }
    const auto bytes = files.ReadBytes(source.folder + "/config", pciConfigBytes);
    const auto config = ParsePciConfig(bytes.value);
    return bytes.value.size() < pciConfigBytes || !config || config->expressPortType.has_value();
}

std::optional<TPciNumbers> ReadModalias(const ISystemFiles& files, const std::string& folder) {
    return ParsePciModalias(ReadAttribute(files, folder + "/modalias").value_or(""));
}

// Bridges have these numbers in a capability, which only root may read; the kernel's attributes are readable
// for every user.
void SetSubsystem(const ISystemFiles& files, const std::string& folder, TPciNumbers& numbers) {
    const auto vendor = ReadHexNumber<std::uint16_t>(files, folder + "/subsystem_vendor");
    const auto subsystem = ReadHexNumber<std::uint16_t>(files, folder + "/subsystem_device");
    if (vendor && subsystem) {
        numbers.subsystemVendorId = *vendor;
        numbers.subsystemId = *subsystem;
    } else if (const auto kept = ReadModalias(files, folder)) {
        numbers.subsystemVendorId = kept->subsystemVendorId;
        numbers.subsystemId = kept->subsystemId;
    }
}

TPciNumbers TakeNumbers(const TPciConfig& config) {
    return {config.vendorId,
            config.deviceId,
            config.subsystemVendorId.value_or(0),
            config.subsystemId.value_or(0),
            config.baseClass,
            config.subclass,
            config.programmingInterface};
}

// The kernel's attributes replace registers that cannot be read: a suspended function returns all ones, and
// captured trees may lack the file.
std::optional<TPciNumbers> FindNumbers(const ISystemFiles& files, const TPciSource& source) {
    if (!source.config) {
        return ReadPciNumbers(files, source.folder);
    }
    TPciNumbers numbers = TakeNumbers(*source.config);
    if (!source.config->subsystemVendorId || !source.config->subsystemId) {
        SetSubsystem(files, source.folder, numbers);
    }
    return numbers;
}

using TFolders = std::map<std::string, std::string>;  // address -> folder

// "0000:00:1f.2". A domain that the kernel numbers itself has more than four digits.
bool IsAddress(std::string_view name) {
    const auto [domain, rest] = SplitAt(name, ':');
    const auto [bus, place] = SplitAt(rest, ':');
    const auto [device, function] = SplitAt(place, '.');
    return domain.size() >= 4 && bus.size() == 2 && device.size() == 2 && function.size() == 1 &&
           IsHex(domain) && IsHex(bus) && IsHex(device) && IsHex(function);
}

// The functions behind a bridge are folders in the bridge's folder. Each address is added only once, which
// ends loops of links in malformed trees.
void AddFolders(const ISystemFiles& files, const std::string& parent, TFolders& folders) {
    for (const std::string& name : files.List(parent).value) {
        const std::string folder = parent + "/" + name;
        if (IsAddress(name) && folders.emplace(name, folder).second) {
            AddFolders(files, folder, folders);
        }
    }
}

TFolders FindFolders(const ISystemFiles& files) {
    TFolders folders;
    for (const std::string& address : files.List(functionsFolder).value) {
        folders.emplace(address, std::string(functionsFolder) + "/" + address);
    }
    if (!folders.empty()) {
        return folders;
    }
    for (const std::string& root : files.List(devicesFolder).value) {
        if (root.starts_with("pci")) {
            AddFolders(files, std::string(devicesFolder) + "/" + root, folders);
        }
    }
    return folders;
}

std::vector<TPciSource> ReadSharedSources(TCollection& collection) {
    return ReadPciSources(collection.GetFiles());
}

}  // namespace

const std::vector<TPciSource>& GetPciSources(TCollection& collection) {
    return collection.ReadOnce(ReadSharedSources);
}

std::vector<TPciSource> ReadPciSources(const ISystemFiles& files) {
    std::vector<TPciSource> sources;
    for (const auto& [address, folder] : FindFolders(files)) {
        TPciSource source;
        source.address = address;
        source.folder = folder;
        source.config = ReadConfig(files, folder + "/config");
        if (const auto numbers = FindNumbers(files, source)) {
            static_cast<TPciNumbers&>(source) = *numbers;
            source.isExpress = IsExpress(files, source);
            sources.push_back(std::move(source));
        }
    }
    return sources;
}

std::optional<TPciNumbers> ReadPciNumbers(const ISystemFiles& files, const std::string& folder) {
    const auto vendor = ReadHexNumber<std::uint16_t>(files, folder + "/vendor");
    const auto device = ReadHexNumber<std::uint16_t>(files, folder + "/device");
    const auto classCode = ReadHexNumber<std::uint32_t>(files, folder + "/class");
    if (!vendor || !device || !classCode) {
        return ReadModalias(files, folder);
    }
    TPciNumbers numbers;
    numbers.vendorId = *vendor;
    numbers.deviceId = *device;
    numbers.baseClass = static_cast<std::uint8_t>(*classCode >> 16);
    numbers.subclass = static_cast<std::uint8_t>(*classCode >> 8);
    numbers.programmingInterface = static_cast<std::uint8_t>(*classCode);
    SetSubsystem(files, folder, numbers);
    return numbers;
}

bool IsBridge(const TPciSource& source) {
    constexpr std::uint8_t bridgeClass = 0x06;
    constexpr std::uint8_t bridgeSubclasses[] = {0x04, 0x07, 0x09};  // those with bridge headers
    if (source.config) {
        return IsBridgeHeader(*source.config);
    }
    return source.baseClass == bridgeClass &&
           std::ranges::find(bridgeSubclasses, source.subclass) != std::end(bridgeSubclasses);
}

std::string MakePciElementName(const TPciSource& source, const IDeviceNames* names) {
    const TDeviceName found = names ? names->FindPci(source) : TDeviceName{};
    if (found.vendor && found.device) {
        return *found.vendor + " " + *found.device;
    }
    constexpr int idDigits = 4;
    const std::string name(GetPciClassName(source.baseClass, source.subclass));
    return (found.vendor ? *found.vendor + " " : "") + name + " " + ToHexDigits(source.vendorId, idDigits) +
           ":" + ToHexDigits(source.deviceId, idDigits);
}

}  // namespace NVORHOST
