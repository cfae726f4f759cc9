#include "vorhost/collect/pci_source.h"

#include "vorhost/collect/attribute.h"
#include "vorhost/collect/pci_class_name.h"

#include <algorithm>
#include <string_view>

namespace NVORHOST {

namespace {

constexpr std::string_view functionsFolder = "/sys/bus/pci/devices";

bool IsBridgeHeader(const TPciConfig& config) {
    return config.header != EPciHeader::device;
}

// Each register costs a trap on a virtual machine, so no more than the header is asked for unless the rest
// can tell something: the kind of a bridge.
std::optional<TPciConfig> ReadConfig(const ISystemFiles& files, const std::string& path) {
    auto config = ParsePciConfig(files.ReadBytes(path, pciHeaderBytes).value);
    if (config && config->HasCapabilities() && IsBridgeHeader(*config)) {
        config = ParsePciConfig(files.ReadBytes(path, pciConfigBytes).value);
    }
    return config;
}

// The kernel marks PCI Express functions with a link speed (since 4.13). Kernels that show whether a function
// uses ARI (since 4.15) have shown that speed if there is one; on older ones the capability tells, which not
// every user may read: then it may be one.
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

bool SetFromConfig(TPciSource& source) {
    if (!source.config) {
        return false;
    }
    source.vendorId = source.config->vendorId;
    source.deviceId = source.config->deviceId;
    source.baseClass = source.config->baseClass;
    source.subclass = source.config->subclass;
    source.programmingInterface = source.config->programmingInterface;
    return true;
}

// A sleeping function answers with ones, and captured trees may lack the registers; the kernel has kept what
// identified it.
bool SetFromAttributes(const ISystemFiles& files, TPciSource& source) {
    const auto vendor = ReadHexNumber<std::uint16_t>(files, source.folder + "/vendor");
    const auto device = ReadHexNumber<std::uint16_t>(files, source.folder + "/device");
    const auto classCode = ReadHexNumber<std::uint32_t>(files, source.folder + "/class");
    if (!vendor || !device || !classCode) {
        return false;
    }
    source.vendorId = *vendor;
    source.deviceId = *device;
    source.baseClass = static_cast<std::uint8_t>(*classCode >> 16);
    source.subclass = static_cast<std::uint8_t>(*classCode >> 8);
    source.programmingInterface = static_cast<std::uint8_t>(*classCode);
    return true;
}

std::string Hex4(std::uint16_t number) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (int shift = 12; shift >= 0; shift -= 4) {
        text += digits[(number >> shift) & 0x0F];
    }
    return text;
}

}  // namespace

std::vector<TPciSource> ReadPciSources(const ISystemFiles& files) {
    std::vector<TPciSource> sources;
    for (const std::string& address : files.List(functionsFolder).value) {
        TPciSource source;
        source.address = address;
        source.folder = std::string(functionsFolder) + "/" + address;
        source.config = ReadConfig(files, source.folder + "/config");
        if (SetFromConfig(source) || SetFromAttributes(files, source)) {
            source.isExpress = IsExpress(files, source);
            sources.push_back(std::move(source));
        }
    }
    return sources;
}

bool IsBridge(const TPciSource& source) {
    constexpr std::uint8_t bridgeClass = 0x06;
    constexpr std::uint8_t bridgeSubclasses[] = {0x04, 0x07, 0x09};  // those with bridge headers
    if (source.config) {
        return IsBridgeHeader(*source.config);
    }
    return source.baseClass == bridgeClass &&
           std::find(std::begin(bridgeSubclasses), std::end(bridgeSubclasses), source.subclass) !=
               std::end(bridgeSubclasses);
}

std::string MakePciElementName(const TPciSource& source, const IDeviceNames* names) {
    const TDeviceName found = names ? names->FindPci(source.vendorId, source.deviceId) : TDeviceName{};
    if (found.vendor && found.device) {
        return *found.vendor + " " + *found.device;
    }
    const std::string name(GetPciClassName(source.baseClass, source.subclass));
    return (found.vendor ? *found.vendor + " " : "") + name + " " + Hex4(source.vendorId) + ":" +
           Hex4(source.deviceId);
}

}  // namespace NVORHOST
