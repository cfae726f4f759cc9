// CIM_PhysicalConnector: one instance per slot for a memory module in the SMBIOS table, empty ones too.
// CIM_ElementInConnector: one instance per slot with a module. CIM_MemoryCapacity: one instance per memory
// array.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/collect/memory/memory_kind.h"
#include "machine/collect/memory/memory_socket.h"
#include "machine/parse/placeholders.h"

namespace NVORHOST {
namespace {

struct TSlot {
    std::optional<std::string> elementName, description, tag, bankLabel;
    std::optional<std::uint16_t> gender, layout;
    TInstancePlace place{};
};

constexpr TPropertyRow<TSlot> slotRows[] = {
    {"ElementName", &TSlot::elementName, "text type 17, 10h"},
    {"Description", &TSlot::description, "type 17, 0Ch; type 17, 0Eh"},
    {"Tag", &TSlot::tag, "text type 17, 10h; text type 17, 11h"},
    {"ConnectorGender", &TSlot::gender, "constant"},
    {"ConnectorLayout", &TSlot::layout, "constant"},
    {"BankLabel", &TSlot::bankLabel, "text type 17, 11h"},
};

constexpr TCimClass<TSlot> slotClass{"CIM_PhysicalConnector", slotRows};

struct TSlotContent {
    std::optional<TCimReference> antecedent, dependent;
    TInstancePlace place{};
};

constexpr TPropertyRow<TSlotContent> slotContentRows[] = {
    {"Antecedent", &TSlotContent::antecedent, "type 17, 10h"},
    {"Dependent", &TSlotContent::dependent, "type 17, 10h"},
};

constexpr TCimClass<TSlotContent> slotContentClass{"CIM_ElementInConnector", slotContentRows};

// A soldered chip is in no slot. A device of an unknown form counts as a module.
const TMemoryFormFactor* FindFactor(const TSmbiosMemoryDevice& socket) {
    return socket.formFactor ? FindMemoryFormFactor(*socket.formFactor) : nullptr;
}

bool IsSlot(const TSmbiosMemoryDevice& socket) {
    constexpr std::uint16_t notRemovable = 2;
    const auto* const factor = FindFactor(socket);
    return factor == nullptr || factor->removalConditions != notRemovable;
}

// Returns, for example, "Empty memory slot, DIMM".
std::string Describe(const TSmbiosMemoryDevice& socket) {
    const auto* const factor = FindFactor(socket);
    return std::string(socket.isPopulated ? "Memory slot" : "Empty memory slot") +
           (factor != nullptr && !factor->name.empty() ? ", " + std::string(factor->name) : "");
}

TSlot MakeSlot(const TSmbiosMemoryDevice& socket) {
    constexpr std::uint16_t female = 3;
    constexpr std::uint16_t slotLayout = 7;
    TSlot slot;
    slot.elementName = WithoutPlaceholder(socket.locator);
    slot.description = Describe(socket);
    slot.bankLabel = WithoutPlaceholder(socket.bank);
    slot.gender = female;
    slot.layout = slotLayout;
    return slot;
}

// A slot has the key of its module, and soldered devices count in the search for duplicates as they do there.
void CommitSlots(TCollection& collection, const std::vector<TSmbiosMemoryDevice>& sockets) {
    const auto keys = collection.MakeKeys(MakeSocketKeySources(sockets), "memory slot");
    for (std::size_t i = 0; i < sockets.size(); ++i) {
        if (!IsSlot(sockets[i])) {
            continue;
        }
        TSlot slot = MakeSlot(sockets[i]);
        slot.tag = keys[i];
        slot.place.structure = GetSmbios(collection).FindNumbered(memoryDeviceType, i);
        if (!slot.elementName) {
            slot.elementName = keys[i];
        }
        collection.Commit(slotClass, slot);
        if (sockets[i].isPopulated) {
            collection.Commit(slotContentClass,
                              {TCimReference{slotClass.GetName(), "Tag", keys[i]},
                               TCimReference{memoryModuleClassName, "Tag", keys[i]}, slot.place});
        }
    }
}

struct TCapacity {
    std::optional<std::string> elementName, description, name;
    std::optional<std::uint64_t> maxKibibytes;
    TInstancePlace place{};
};

constexpr TPropertyRow<TCapacity> capacityRows[] = {
    {"ElementName", &TCapacity::elementName, "constant"},
    {"Description", &TCapacity::description, "type 16, 05h; type 16, 0Dh; type 16, 06h"},
    {"Name", &TCapacity::name, "type 16, 05h"},
    {"MaximumMemoryCapacity", &TCapacity::maxKibibytes, "type 16, 07h; type 16, 0Fh"},
};

constexpr TCimClass<TCapacity> capacityClass{"CIM_MemoryCapacity", capacityRows};

std::string Describe(const TSmbiosMemoryArray& array) {
    const std::string use(FindMemoryArrayUse(array.use.value_or(0)).value_or("Memory"));
    const auto ecc = FindErrorCorrection(array.errorCorrection.value_or(0));
    const auto count = array.slotCount.value_or(0);
    return use + (count != 0 ? ", " + std::to_string(count) + (count == 1 ? " device" : " devices") : "") +
           (ecc ? ", error correction: " + std::string(*ecc) : "");
}

// Handles are not stable across boots, so the key is the 1-based position of the array in the table.
void CommitCapacities(TCollection& collection, const std::vector<TSmbiosMemoryArray>& arrays) {
    constexpr std::uint64_t kibibyte = 1024;
    for (std::size_t i = 0; i < arrays.size(); ++i) {
        TCapacity capacity;
        capacity.name = "memory array " + std::to_string(i + 1);
        capacity.place.structure = GetSmbios(collection).FindNumbered(memoryArrayType, i);
        capacity.elementName = capacity.name;
        capacity.description = Describe(arrays[i]);
        if (arrays[i].maxCapacityBytes) {
            capacity.maxKibibytes = *arrays[i].maxCapacityBytes / kibibyte;
        }
        collection.Commit(capacityClass, capacity);
    }
}

void CollectMemorySlots(TCollection& collection) {
    const auto& structures = GetSmbios(collection).GetStructures();
    CommitSlots(collection, ReadMemorySockets(structures));
    CommitCapacities(collection, ReadMemoryArrays(structures));
}

constexpr const IClassDeclaration* classes[] = {&slotClass, &slotContentClass, &capacityClass};

}  // namespace

extern constinit const TCollector memorySlotCollector{
    .name = "memory-slot",
    .description = "Slots for memory modules, and what the memory arrays can hold",
    .fills = classes,
    .reads = smbiosSources,
    .collect = CollectMemorySlots,
    .isForDocuments = false,
};

}  // namespace NVORHOST
