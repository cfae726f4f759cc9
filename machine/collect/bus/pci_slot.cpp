#include "machine/collect/bus/pci_slot.h"

#include "machine/collect/frame/attribute.h"

#include <cstdint>

namespace NVORHOST {
namespace {

constexpr std::string_view slotsFolder = "/sys/bus/pci/slots/";
constexpr std::string_view devicesFolder = "/sys/bus/pci/devices/";

// "0000:05:00.0".
bool IsAddress(std::string_view name) {
    return name.size() >= 12 && name[name.size() - 2] == '.' && name[name.size() - 5] == ':' &&
           name[name.size() - 8] == ':';
}

bool IsBridgeTo(std::uint32_t classCode) {
    constexpr std::uint32_t pciBridge = 0x0604;
    constexpr std::uint32_t cardBusBridge = 0x0607;
    const std::uint32_t kind = classCode >> 8;
    return kind == pciBridge || kind == cardBusBridge;
}

bool IsHostBridge(std::uint32_t classCode) {
    return classCode >> 8 == 0x0600;
}

}  // namespace

std::map<std::string, std::string> ReadPciSlotFolders(const ISystemFiles& files) {
    std::map<std::string, std::string> folders;
    for (const std::string& name : files.List(slotsFolder.substr(0, slotsFolder.size() - 1)).value) {
        const std::string folder = std::string(slotsFolder) + name;
        if (auto address = ReadAttribute(files, folder + "/address")) {
            folders.emplace(std::move(*address), folder);
        }
    }
    return folders;
}

std::optional<std::string> FindFunctionInSlot(const ISystemFiles& files, std::string_view address) {
    const std::string folder = std::string(devicesFolder) + std::string(address);
    const auto classCode = ReadHexNumber<std::uint32_t>(files, folder + "/class");
    if (!classCode || IsHostBridge(*classCode)) {
        return std::nullopt;
    }
    if (!IsBridgeTo(*classCode)) {
        return std::string(address);
    }
    // The functions behind a bridge are folders in the bridge's folder.
    for (const std::string& name : files.List(folder).value) {
        if (!IsAddress(name)) {
            continue;
        }
        if (auto found = FindFunctionInSlot(files, name)) {
            return found;
        }
    }
    return std::nullopt;
}

}  // namespace NVORHOST
