// KELSG_SystemSlot: one instance per slot of the SMBIOS table, in its order, empty slots included. The card
// in a PCI slot and the state of the slot's latch come from the kernel.
#include "machine/collect/bus/pci_class_name.h"
#include "machine/collect/bus/pci_slot.h"
#include "machine/collect/bus/pci_source.h"
#include "machine/collect/firmware/slot_kind.h"
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/named_place.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/smbios_slot.h"

namespace NVORHOST {
namespace {

struct TSystemSlot {
    std::optional<std::string> elementName, description, tag;
    std::optional<std::uint16_t> connectorGender, connectorLayout, maxDataWidthBits, number;
    std::optional<bool> openSwitch, specialPurpose, supportsHotPlug;
    TInstancePlace place{};
};

constexpr TPropertyRow<TSystemSlot> systemSlotRows[] = {
    {"ElementName", &TSystemSlot::elementName, "text type 9, 04h"},
    {"Description", &TSystemSlot::description,
     "type 9, 05h; type 9, 07h; /sys/bus/pci/devices/*; /sys/bus/pci/devices/*/class"},
    {"ManufactureDate", TUnavailable{ECimType::eDateTime}, "none: no such field"},
    {"Manufacturer", TUnavailable{ECimType::eString}, "none: no such field"},
    {"Model", TUnavailable{ECimType::eString}, "none: no such field"},
    {"PartNumber", TUnavailable{ECimType::eString}, "none: no such field"},
    {"SerialNumber", TUnavailable{ECimType::eString}, "none: no such field"},
    {"Tag", &TSystemSlot::tag, "text type 9, 04h; type 9, 0Dh"},
    {"Version", TUnavailable{ECimType::eString}, "none: no such field"},
    {"ConnectorGender", &TSystemSlot::connectorGender, "type 9, 05h"},
    {"ConnectorLayout", &TSystemSlot::connectorLayout, "type 9, 05h; type 9, 13h and later"},
    {"ConnectorPinout", TUnavailable{ECimType::eString}, "none: no such field"},
    {"NumPhysicalPins", TUnavailable{ECimType::eUint32}, "none: no such field"},
    {"HeightAllowed", TUnavailable{ECimType::eReal32}, "none: the length field has short and long only"},
    {"LengthAllowed", TUnavailable{ECimType::eReal32}, "none: the length field has short and long only"},
    {"MaxDataWidth", &TSystemSlot::maxDataWidthBits, "type 9, 06h"},
    {"Number", &TSystemSlot::number, "type 9, 09h"},
    {"OpenSwitch", &TSystemSlot::openSwitch, "@/latch"},
    {"SpecialPurpose", &TSystemSlot::specialPurpose, "type 9, 05h"},
    {"SupportsHotPlug", &TSystemSlot::supportsHotPlug, "type 9, 0Ch bit 1"},
    {"ThermalRating", TUnavailable{ECimType::eUint32}, "none: no such field"},
};

constexpr TCimClass<TSystemSlot> systemSlotClass{"KELSG_SystemSlot", systemSlotRows};
constexpr const IClassDeclaration* classes[] = {&systemSlotClass};

// The folder of a bridge lists the functions below it.
constexpr auto sourcePatterns = Join(smbiosSources, std::array<TSourcePattern, 12>{
                                                        "/sys/bus/pci/slots",
                                                        "/sys/bus/pci/slots/*/address",
                                                        "/sys/bus/pci/slots/*/latch",
                                                        "/sys/class/pci_bus/*/device/power_state",
                                                        "/sys/class/pci_bus/*/device/power/runtime_status",
                                                        "/sys/bus/pci/devices/*",
                                                        "/sys/bus/pci/devices/*/class",
                                                        "/sys/bus/pci/devices/*/vendor",
                                                        "/sys/bus/pci/devices/*/device",
                                                        "/sys/bus/pci/devices/*/subsystem_vendor",
                                                        "/sys/bus/pci/devices/*/subsystem_device",
                                                        "/sys/bus/pci/devices/*/modalias",
                                                    });

constexpr std::uint8_t isAvailable = 0x03;  // usage: the slot is empty

// Path of each folder in /sys/bus/pci/slots by PCI address without function.
using TSlotFolders = std::map<std::string, std::string>;

std::uint16_t FindLayout(const TSlotKind& kind, const TSmbiosSlot& slot) {
    constexpr std::uint16_t expressOfAnySize = 18;
    if (kind.connectorLayout != expressOfAnySize || !slot.physicalWidth) {
        return kind.connectorLayout;
    }
    return FindExpressLayout(*slot.physicalWidth).value_or(expressOfAnySize);
}

void SetFromKind(const TSmbiosSlot& slot, TSystemSlot& target) {
    constexpr std::uint16_t female = 3;
    const TSlotKind* kind = slot.kind ? FindSlotKind(*slot.kind) : nullptr;
    if (kind == nullptr) {
        return;
    }
    target.connectorLayout = FindLayout(*kind, slot);
    target.specialPurpose = kind->specialPurpose;
    if (kind->connector == ESlotConnector::cardEdge) {
        target.connectorGender = female;
    }
    if (kind->number == ESlotNumber::given && slot.number) {
        target.number = *slot.number;
    }
}

// Removes the function from "0000:05:00.0", as in the kernel's addresses of slots.
std::string WithoutFunction(const std::string& address) {
    return address.substr(0, address.rfind('.'));
}

// Returns the folder of the slot in /sys/bus/pci/slots; an empty text if the kernel does not have the slot.
std::string FindFolder(const TSlotFolders& folders, const TSmbiosSlot& slot) {
    const auto found = slot.pciAddress ? folders.find(WithoutFunction(*slot.pciAddress)) : folders.end();
    return found == folders.end() ? std::string() : found->second;
}

std::optional<bool> ReadOpenSwitch(const ISystemFiles& files, const std::string& folder) {
    constexpr std::uint8_t isOpen = 1;
    const auto latch = folder.empty() ? std::nullopt : ReadNumber<std::uint8_t>(files, folder + "/latch");
    return latch ? std::optional(*latch == isOpen) : std::nullopt;
}

std::string NameFunction(TCollection& collection, const std::string& address) {
    const ISystemFiles& files = collection.GetFiles();
    const std::string folder = "/sys/bus/pci/devices/" + address;
    const auto numbers = ReadPciNumbers(files, folder);
    const IDeviceNames* names = collection.GetDeviceNames();
    if (names != nullptr && numbers) {
        const TDeviceName found = names->FindPci(*numbers);
        if (found.vendor && found.device) {
            return *found.vendor + " " + *found.device;
        }
    }
    // Fall back to the class, which may be readable without the other numbers.
    const auto classCode = ReadHexNumber<std::uint32_t>(files, folder + "/class").value_or(0);
    return std::string(GetPciClassName(static_cast<std::uint8_t>(classCode >> 16),
                                       static_cast<std::uint8_t>(classCode >> 8)));
}

// Returns, for example, "System slot, PCI Express 3 x8, in use by Ethernet controller at 0000:05:00.0".
std::string Describe(TCollection& collection, const TSmbiosSlot& slot) {
    std::string description = "System slot";
    const TSlotKind* kind = slot.kind ? FindSlotKind(*slot.kind) : nullptr;
    if (kind != nullptr && !kind->name.empty()) {
        description += ", " + std::string(kind->name);
    }
    // If the firmware reports an empty slot with an address, the address is that of the bus, not of a card.
    const auto function = slot.pciAddress && slot.usage != isAvailable
                              ? FindFunctionInSlot(collection.GetFiles(), *slot.pciAddress)
                              : std::nullopt;
    if (function) {
        return description + ", in use by " + NameFunction(collection, *function) + " at " + *function;
    }
    const auto usage = slot.usage ? FindSlotUsage(*slot.usage) : std::nullopt;
    return usage ? description + ", " + std::string(*usage) : description;
}

TSystemSlot MakeSlot(TCollection& collection, const TSlotFolders& folders, const TSmbiosSlot& slot) {
    TSystemSlot target;
    target.elementName = WithoutPlaceholder(slot.designation);
    target.description = Describe(collection, slot);
    target.maxDataWidthBits = slot.dataWidth ? FindMaxDataWidth(*slot.dataWidth) : std::nullopt;
    target.place.folder = FindFolder(folders, slot);
    target.openSwitch = ReadOpenSwitch(collection.GetFiles(), target.place.folder);
    target.supportsHotPlug = slot.supportsHotPlug;
    SetFromKind(slot, target);
    return target;
}

void CollectSystemSlots(TCollection& collection) {
    constexpr std::uint8_t slotType = 9;
    std::optional<TSlotFolders> folders;
    std::vector<TKeyedRecord<TSystemSlot>> slots;
    std::vector<TNamedPlace> places;
    for (const TSmbiosStructure& structure : GetSmbios(collection).GetStructures()) {
        if (structure.GetType() == slotType) {
            if (!folders) {  // the kernel may list many more slots than exist, so read them only if needed
                folders = ReadPciSlotFolders(collection.GetFiles());
            }
            const TSmbiosSlot source = ParseSmbiosSlot(structure);
            TSystemSlot slot = MakeSlot(collection, *folders, source);
            slot.place.structure = &structure;
            // A slot without a designation is keyed by its number, as an address alone would be a poor name.
            places.push_back({slot.elementName, slot.elementName ? source.pciAddress : std::nullopt});
            slots.push_back({std::move(slot), {}});
        }
    }
    auto keySources = MakePlaceKeySources(places, "slot");
    for (std::size_t i = 0; i < slots.size(); ++i) {
        slots[i].keySource = std::move(keySources[i]);
    }
    CommitKeyed(collection, systemSlotClass, std::move(slots), &TSystemSlot::tag, "slot");
}

}  // namespace

extern constinit const TCollector systemSlotCollector{
    .name = "slot",
    .description = "Expansion slots and what is in them",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectSystemSlots,
};

}  // namespace NVORHOST
