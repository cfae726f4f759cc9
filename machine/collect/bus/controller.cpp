// KELSG_VideoController, KELSG_USBController and KELSG_IDEProtocolController: one instance per controller:
// first the PCI functions of these classes in the order of their addresses, then display and USB controllers
// on other buses. A PCI controller is also collected as a PCI function.
#include "machine/collect/bus/pci_class_name.h"
#include "machine/collect/bus/pci_source.h"
#include "machine/collect/bus/usb_tree.h"
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/frame/kernel_name.h"
#include "os/path_walk.h"
#include "text/find_row.h"
#include "text/lines.h"
#include "text/numbers.h"

#include <algorithm>
#include <limits>
#include <set>

namespace NVORHOST {
namespace {

struct TController {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<std::uint32_t> maxNumberControlled, videoMemoryBytes;
    std::optional<std::uint64_t> videoMemorySize;
    std::optional<std::uint16_t> protocolSupported, interfaceType, usbVersion;
    TInstancePlace place{};
};

constexpr TPropertyRow<TController> videoRows[] = {
    {"ElementName", &TController::elementName, "@/config 00h; @/config 02h; @/vendor; @/device"},
    {"Description", &TController::description, "@/config 09h; @/class"},
    {"DeviceID", &TController::deviceId, "@"},
    {"OperationalStatus", TUnavailable{ECimType::eUint16, /*isArray=*/true},
     "none: a bound driver does not show that a controller works"},
    {"MaxNumberControlled", TUnavailable{ECimType::eUint32}, "none: not reported by the adapter"},
    {"ProtocolSupported", TUnavailable{ECimType::eUint16}, "none: displays have no code"},
    {"TimeOfLastReset", TUnavailable{ECimType::eDateTime}, "none: the kernel keeps no such time"},
    {"MaxMemorySupported", &TController::videoMemoryBytes, "number @/mem_info_vram_total"},
    {"NumberOfVideoPages", TUnavailable{ECimType::eUint32}, "none: not a notion of today's adapters"},
    {"VideoMemoryType", TUnavailable{ECimType::eUint16}, "none: not shown"},
    {"VideoMemorySize", &TController::videoMemorySize, "number @/mem_info_vram_total"},  // bytes
};

constexpr TPropertyRow<TController> usbRows[] = {
    {"ElementName", &TController::elementName, "@/config 00h; @/config 02h; @/vendor; @/device"},
    {"Description", &TController::description, "@/config 09h; @/class"},
    {"DeviceID", &TController::deviceId, "@"},
    {"OperationalStatus", TUnavailable{ECimType::eUint16, /*isArray=*/true},
     "none: a bound driver does not show that a controller works"},
    {"MaxNumberControlled", &TController::maxNumberControlled, "constant"},
    {"ProtocolSupported", &TController::protocolSupported, "constant"},
    {"TimeOfLastReset", TUnavailable{ECimType::eDateTime}, "none: the kernel keeps no such time"},
    {"InterfaceType", &TController::interfaceType, "@/config 09h; @/class"},
    {"USBVersion", &TController::usbVersion, "/sys/bus/usb/devices/*/version; @/config 09h; @/class"},
};

constexpr TPropertyRow<TController> ideRows[] = {
    {"ElementName", &TController::elementName, "@/config 00h; @/config 02h; @/vendor; @/device"},
    {"Description", &TController::description, "@/config 09h; @/class"},
    {"DeviceID", &TController::deviceId, "@"},
    {"OperationalStatus", TUnavailable{ECimType::eUint16, /*isArray=*/true},
     "none: a bound driver does not show that a controller works"},
};

constexpr TCimClass<TController> videoControllerClass{"KELSG_VideoController", videoRows};
constexpr TCimClass<TController> usbControllerClass{"KELSG_USBController", usbRows};
constexpr TCimClass<TController> ideControllerClass{"KELSG_IDEProtocolController", ideRows};
constexpr const IClassDeclaration* classes[] = {&videoControllerClass, &usbControllerClass,
                                                &ideControllerClass};

constexpr TSourcePattern sourcePatterns[] = {
    "/sys/bus/pci/devices", "/sys/bus/pci/devices/*", "/sys/bus/pci/devices/*/*",
    "/sys/bus/usb/devices", "/sys/bus/usb/devices/*", "/sys/bus/usb/devices/*/version",
    "/sys/class/drm",       "/sys/class/drm/*",       "/sys/class/drm/*/device",
    "/sys/devices",         "/sys/devices/**",
};

// Maps the programming interface of PCI class 0C03h to CIM_USBController.InterfaceType, which has numbers for
// UHCI and OHCI; later interfaces are "other".
struct TUsbInterface {
    std::uint8_t programmingInterface;
    std::uint16_t interfaceType;
    std::string_view word;
    std::uint16_t usbVersion;  // BCD, used if the root hub is not visible; 0: not determined by the interface
};

constexpr std::uint16_t otherInterface = 1;
constexpr TUsbInterface usbInterfaces[] = {
    {0x00, 2, "UHCI", 0x0110},
    {0x10, 3, "OHCI", 0x0110},
    {0x20, otherInterface, "EHCI", 0x0200},
    {0x30, otherInterface, "xHCI", 0x0},
    {0x40, otherInterface, "USB4", 0},
    {0x80, otherInterface, "", 0},
    {0xFE, otherInterface, "device", 0},
};

constexpr std::uint16_t usbAddressSpace = 127;  // a controller gives addresses 1 to 127
constexpr std::uint16_t usbProtocol = 16;

const TUsbInterface* FindUsbInterface(std::uint8_t programmingInterface) {
    return FindRow(usbInterfaces, &TUsbInterface::programmingInterface, programmingInterface);
}

// Parses " 2.00" as the BCD number 0200h.
std::optional<std::uint16_t> ParseUsbVersion(std::string_view text) {
    const auto [major, minor] = SplitAt(TrimBlanks(text), '.');
    const auto majorNumber = ParseNumber<std::uint8_t>(major, 16);
    const auto minorNumber = minor.size() == 2 ? ParseNumber<std::uint8_t>(minor, 16) : std::nullopt;
    if (!majorNumber || !minorNumber) {
        return std::nullopt;
    }
    return static_cast<std::uint16_t>(*majorNumber << 8 | *minorNumber);
}

// Returns the highest version among the controller's root hubs: xHCI has one hub for USB 2 and one for USB 3.
std::optional<std::uint16_t> FindRootHubVersion(const ISystemFiles& files,
                                                const std::vector<TUsbRootHub>& hubs,
                                                std::string_view controllerPath) {
    std::optional<std::uint16_t> highest;
    for (const TUsbRootHub& hub : hubs) {
        if (hub.controllerPath != controllerPath) {
            continue;
        }
        const auto text = ReadAttribute(files, "/sys/bus/usb/devices/" + hub.name + "/version");
        highest = std::max(highest, text ? ParseUsbVersion(*text) : std::nullopt);  // nullopt is the smallest
    }
    return highest;
}

std::string LastName(std::string_view path) {
    return std::string(path.substr(path.rfind('/') + 1));
}

std::string FindPciPath(const ISystemFiles& files, const TPciSource& source) {
    const auto link = files.ReadLink(source.folder);
    return link.IsOk() ? ResolveLinkText(source.folder, link.value) : source.folder;
}

TController MakePciController(TCollection& collection, const TPciSource& source) {
    TController controller;
    controller.place.folder = source.folder;
    controller.elementName = MakePciElementName(source, collection.GetDeviceNames());
    controller.description = GetPciClassName(source.baseClass, source.subclass);
    controller.deviceId = source.address;
    return controller;
}

void CommitPciUsb(TCollection& collection, const TPciSource& source, const std::vector<TUsbRootHub>& hubs) {
    TController controller = MakePciController(collection, source);
    controller.maxNumberControlled = usbAddressSpace;
    controller.protocolSupported = usbProtocol;
    controller.usbVersion =
        FindRootHubVersion(collection.GetFiles(), hubs, FindPciPath(collection.GetFiles(), source));
    if (const TUsbInterface* row = FindUsbInterface(source.programmingInterface)) {
        controller.interfaceType = row->interfaceType;
        if (!row->word.empty()) {
            *controller.description += " (" + std::string(row->word) + ")";
        }
        if (!controller.usbVersion && row->usbVersion != 0) {
            controller.usbVersion = row->usbVersion;
        }
    }
    collection.Commit(usbControllerClass, controller);
}

// Commits the controllers that are not PCI functions, by their root hubs: system-on-chip and simulated
// controllers.
void CommitOtherUsb(TCollection& collection, const std::vector<TUsbRootHub>& hubs,
                    const std::set<std::string>& pciPaths) {
    std::set<std::string> done;
    for (const TUsbRootHub& hub : hubs) {
        if (pciPaths.contains(hub.controllerPath) || !done.insert(hub.controllerPath).second) {
            continue;
        }
        TController controller;
        controller.deviceId = LastName(hub.controllerPath);
        controller.elementName = "USB controller " + *controller.deviceId;
        controller.description = "USB controller";
        controller.maxNumberControlled = usbAddressSpace;
        controller.protocolSupported = usbProtocol;
        controller.usbVersion = FindRootHubVersion(collection.GetFiles(), hubs, hub.controllerPath);
        collection.Commit(usbControllerClass, controller);
    }
}

void CommitPciVideo(TCollection& collection, const TPciSource& source) {
    TController controller = MakePciController(collection, source);
    // A size that does not fit into the property's 32 bits is left out instead of truncated.
    const auto bytes =
        ReadNumber<std::uint64_t>(collection.GetFiles(), source.folder + "/mem_info_vram_total");
    if (bytes && *bytes != 0) {
        controller.videoMemorySize = bytes;
    }
    if (bytes && *bytes != 0 && *bytes <= std::numeric_limits<std::uint32_t>::max()) {
        controller.videoMemoryBytes = static_cast<std::uint32_t>(*bytes);
    }
    collection.Commit(videoControllerClass, controller);
}

// True if a folder on the path is one of the PCI functions.
bool IsBelow(const std::set<std::string, std::less<>>& addresses, std::string_view path) {
    while (!path.empty()) {
        const auto [name, rest] = SplitAt(path, '/');
        if (addresses.contains(name)) {
            return true;
        }
        path = rest;
    }
    return false;
}

// Returns the path of the device of a DRM card; nullopt if the card has no device.
std::optional<std::string> FindCardDevice(const ISystemFiles& files, const std::string& cardFolder) {
    const auto card = files.ReadLink(cardFolder);
    const auto device = files.ReadLink(cardFolder + "/device");
    if (!device.IsOk()) {
        return std::nullopt;
    }
    const std::string folder = card.IsOk() ? ResolveLinkText(cardFolder, card.value) : cardFolder;
    return ResolveLinkText(folder + "/device", device.value);
}

// Commits the DRM cards that are not PCI functions, such as a firmware frame buffer or a USB display adapter.
// Several cards may share one device, which is committed once.
void CommitOtherVideos(TCollection& collection, const std::set<std::string, std::less<>>& pciDisplays) {
    const ISystemFiles& files = collection.GetFiles();
    std::set<std::string> done;
    for (const std::string& name : ListNumbered(files, "/sys/class/drm", "card")) {
        const auto device = FindCardDevice(files, "/sys/class/drm/" + name);
        if (!device || IsBelow(pciDisplays, *device) || !done.insert(*device).second) {
            continue;
        }
        TController controller;
        controller.deviceId = ReadDevicePosition(files, *device + "/" + name).value_or(LastName(*device));
        controller.elementName = "Display controller " + *controller.deviceId;
        controller.description = "Display controller";
        collection.Commit(videoControllerClass, controller);
    }
}

constexpr std::uint8_t displayClass = 0x03;

bool HasClass(const TPciSource& source, std::uint8_t baseClass, std::uint8_t subclass) {
    return source.baseClass == baseClass && source.subclass == subclass;
}

void CollectControllers(TCollection& collection) {
    const std::vector<TUsbRootHub> hubs = ReadUsbRootHubs(collection.GetFiles());
    std::set<std::string> usbPaths;
    std::set<std::string, std::less<>> displays;
    for (const TPciSource& source : GetPciSources(collection)) {
        if (source.baseClass == displayClass) {
            CommitPciVideo(collection, source);
            displays.insert(source.address);
        } else if (HasClass(source, 0x0C, 0x03)) {
            CommitPciUsb(collection, source, hubs);
            usbPaths.insert(FindPciPath(collection.GetFiles(), source));
        } else if (HasClass(source, 0x01, 0x01)) {
            collection.Commit(ideControllerClass, MakePciController(collection, source));
        }
    }
    CommitOtherVideos(collection, displays);
    CommitOtherUsb(collection, hubs, usbPaths);
}

}  // namespace

extern constinit const TCollector controllerCollector{
    .name = "controller",
    .description = "Display, USB and IDE controllers",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectControllers,
};

}  // namespace NVORHOST
