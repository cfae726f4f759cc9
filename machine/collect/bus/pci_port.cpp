// CIM_PCIPort: one instance per PCI function in the order of their addresses: its link and its place, as far
// as the kernel shows them without waking the function.
#include "machine/collect/bus/pci_slot.h"
#include "machine/collect/bus/pci_source.h"
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/identifying_info.h"
#include "machine/parse/pci_link.h"

namespace NVORHOST {
namespace {

struct TPort {
    std::optional<std::string> elementName, description, deviceId, powerState;
    std::optional<std::vector<std::string>> identities, identityDescriptions;
    std::optional<std::uint64_t> bitsPerSecond, maxBitsPerSecond;
    std::optional<std::uint16_t> lanes, maxLanes, node;
    TInstancePlace place{};
};

constexpr TPropertyRow<TPort> portRows[] = {
    {"ElementName", &TPort::elementName, "@/config 00h; @/config 02h; @/vendor; @/device"},
    {"Description", &TPort::description,
     "@/max_link_speed if awake; @/current_link_width; @/current_link_speed; @/max_link_width"},
    {"DeviceID", &TPort::deviceId, "@"},
    {"OtherIdentifyingInfo", &TPort::identities,
     "[Driver] @/driver; [Slot] /sys/bus/pci/slots; [IOMMU group] @/iommu_group; [Serial number] "
     "@/serial_number"},
    {"IdentifyingDescriptions", &TPort::identityDescriptions, "property OtherIdentifyingInfo"},
    {"Speed", &TPort::bitsPerSecond, "@/current_link_speed; @/current_link_width; @/max_link_speed if awake"},
    {"MaxSpeed", &TPort::maxBitsPerSecond, "@/max_link_width; @/max_link_speed if awake"},
    {"LinkWidth", &TPort::lanes, "@/current_link_width; @/current_link_speed; @/max_link_speed if awake"},
    {"MaxLinkWidth", &TPort::maxLanes, "@/max_link_width; @/max_link_speed if awake"},
    {"NUMANode", &TPort::node, "number @/numa_node"},
    {"PowerState", &TPort::powerState, "@/power_state"},
};

constexpr TCimClass<TPort> portClass{"CIM_PCIPort", portRows};
constexpr const IClassDeclaration* classes[] = {&portClass};

constexpr auto sourcePatterns = Join(pciSources, std::array<TSourcePattern, 2>{
                                                     "/sys/bus/pci/slots",
                                                     "/sys/bus/pci/slots/*/address",
                                                 });

struct TLink {
    std::uint32_t speed;  // MT/s
    std::uint16_t lanes;
};

// Reads the pair of attributes "<prefix>_link_speed" and "<prefix>_link_width". One without the other is not
// a link.
std::optional<TLink> ReadLink(const ISystemFiles& files, const TPciSource& source,
                              const std::string& prefix) {
    const std::string path = source.folder + "/" + prefix + "_link_";
    const auto lanes = ParsePciLinkWidth(ReadAttribute(files, path + "width").value_or(""));
    if (!lanes) {
        return std::nullopt;
    }
    const auto speed = ParsePciLinkSpeed(ReadAttribute(files, path + "speed").value_or(""));
    return speed ? std::optional(TLink{*speed, *lanes}) : std::nullopt;
}

// "x4 at 2.5 GT/s".
std::string Describe(const TLink& link) {
    constexpr std::uint32_t thousand = 1000;
    const std::uint32_t tenths = link.speed % thousand / 100;
    return "x" + std::to_string(link.lanes) + " at " + std::to_string(link.speed / thousand) +
           (tenths != 0 ? "." + std::to_string(tenths) : "") + " GT/s";
}

// The kernel reads the registers of a link on every access. It resumes the port above the function for that,
// and newer kernels also resume a function in D3cold. Kernels before 5.11 do not show the power state.
bool IsAwake(const ISystemFiles& files, const TPciSource& source,
             const std::optional<std::string>& powerState) {
    if (powerState) {
        return powerState == "D0";
    }
    const auto status = ReadAttribute(files, source.folder + "/power/runtime_status");
    return status == "active" || status == "unsupported";
}

void SetLinks(const ISystemFiles& files, const TPciSource& source, TPort& port) {
    const auto current = ReadLink(files, source, "current");
    const auto maximum = ReadLink(files, source, "max");
    if (current) {
        port.bitsPerSecond = GetPciLinkBandwidth(current->speed, current->lanes);
        port.lanes = current->lanes;
        *port.description += ", link " + Describe(*current);
    }
    if (maximum) {
        port.maxBitsPerSecond = GetPciLinkBandwidth(maximum->speed, maximum->lanes);
        port.maxLanes = maximum->lanes;
        *port.description += ", at most " + Describe(*maximum);
    }
}

using TSlots = std::map<std::string, std::string>;

// The name of the kernel's slot. A slot has the address of its functions without their number.
std::optional<std::string> FindSlotName(const TSlots& slots, const std::string& address) {
    const auto found = slots.find(address.substr(0, address.rfind('.')));
    return found == slots.end() ? std::nullopt
                                : std::optional(found->second.substr(found->second.rfind('/') + 1));
}

TPort MakePort(TCollection& collection, const TSlots& slots, const TPciSource& source) {
    const ISystemFiles& files = collection.GetFiles();
    TPort port;
    port.place.folder = source.folder;
    port.elementName = MakePciElementName(source, collection.GetDeviceNames());
    const bool isExpress = files.Exists(source.folder + "/max_link_speed");
    port.description = isExpress ? "PCI Express function" : "PCI function";
    port.deviceId = source.address;
    port.node = ReadNumber<std::uint16_t>(files, source.folder + "/numa_node");  // -1 without a node
    port.powerState = ReadAttribute(files, source.folder + "/power_state");
    TIdentifyingInfo info;
    info.Add("Driver", ReadLinkedName(files, source.folder + "/driver"));
    info.Add("Slot", FindSlotName(slots, source.address));
    info.Add("IOMMU group", ReadLinkedName(files, source.folder + "/iommu_group"));
    if (isExpress && (collection.MayWake() || IsAwake(files, source, port.powerState))) {
        SetLinks(files, source, port);
        info.Add("Serial number", ReadAttribute(files, source.folder + "/serial_number"));
    }
    port.identities = std::move(info.values);
    port.identityDescriptions = std::move(info.descriptions);
    return port;
}

void CollectPciPorts(TCollection& collection) {
    const TSlots slots = ReadPciSlotFolders(collection.GetFiles());
    for (const TPciSource& source : GetPciSources(collection)) {
        collection.Commit(portClass, MakePort(collection, slots, source));
    }
}

}  // namespace

extern constinit const TCollector pciPortCollector{
    .name = "pci-port",
    .description = "Links, drivers and places of the PCI functions",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectPciPorts,
    .isForDocuments = false,
};

}  // namespace NVORHOST
