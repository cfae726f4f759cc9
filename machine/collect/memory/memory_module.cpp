// KELSG_SPDData: one instance per populated memory device of the SMBIOS table, in its order. The module's own
// EEPROM adds what the table lacks, if the kernel exposes it and its texts identify the module.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/collect/memory/memory_kind.h"
#include "machine/collect/memory/memory_socket.h"
#include "machine/collect/memory/spd_source.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/smbios_memory.h"
#include "text/ascii.h"
#include "text/hex.h"

#include <algorithm>
#include <unordered_map>

namespace NVORHOST {
namespace {

struct TMemoryModule {
    std::optional<std::string> elementName, description, manufacturer, partNumber, serialNumber, tag,
        bankLabel, errorCorrection;
    std::optional<std::uint16_t> removalConditions, formFactor, memoryType, dataWidthBits, totalWidthBits,
        configuredMillivolts;
    std::optional<std::uint32_t> interleavePosition, positionInRow, speed, configuredSpeed;
    std::optional<std::uint8_t> rank;
    std::optional<std::uint64_t> capacityBytes;
    TInstancePlace place{};
};

constexpr TPropertyRow<TMemoryModule> memoryModuleRows[] = {
    {"ElementName", &TMemoryModule::elementName, "property Manufacturer; property PartNumber"},
    {"Description", &TMemoryModule::description,
     "type 17, 12h; type 17, 0Eh; /sys/bus/i2c/drivers/ee1004/*/eeprom; "
     "/sys/bus/i2c/drivers/spd5118/*/eeprom; /sys/bus/i2c/drivers/at24/*/eeprom"},
    {"ManufactureDate", TUnavailable{ECimType::eDateTime},
     "none: the EEPROM has a week only, which Description holds"},
    {"Manufacturer", &TMemoryModule::manufacturer, "text type 17, 17h"},
    {"Model", TUnavailable{ECimType::eString}, "none: the part number is the model"},
    {"PartNumber", &TMemoryModule::partNumber,
     "text type 17, 1Ah; /sys/bus/i2c/drivers/ee1004/*/eeprom; /sys/bus/i2c/drivers/spd5118/*/eeprom; "
     "/sys/bus/i2c/drivers/at24/*/eeprom"},
    {"SerialNumber", &TMemoryModule::serialNumber,
     "text type 17, 18h; /sys/bus/i2c/drivers/ee1004/*/eeprom; /sys/bus/i2c/drivers/spd5118/*/eeprom; "
     "/sys/bus/i2c/drivers/at24/*/eeprom"},
    {"Tag", &TMemoryModule::tag, "text type 17, 10h; text type 17, 11h"},
    {"Version", TUnavailable{ECimType::eString}, "none: no such field"},
    {"RemovalConditions", &TMemoryModule::removalConditions, "type 17, 0Eh"},
    {"FormFactor", &TMemoryModule::formFactor, "type 17, 0Eh"},
    {"BankLabel", &TMemoryModule::bankLabel, "text type 17, 11h"},
    {"Capacity", &TMemoryModule::capacityBytes, "type 17, 0Ch; type 17, 1Ch"},
    {"DataWidth", &TMemoryModule::dataWidthBits, "type 17, 0Ah"},
    {"InterleavePosition", &TMemoryModule::interleavePosition, "type 20, 11h"},
    {"MemoryType", &TMemoryModule::memoryType, "type 17, 12h"},
    {"PositionInRow", &TMemoryModule::positionInRow, "type 20, 10h"},
    {"Speed", &TMemoryModule::speed, "type 17, 15h; type 17, 54h"},  // MT/s
    {"TotalWidth", &TMemoryModule::totalWidthBits, "type 17, 08h"},
    {"ConfiguredMemoryClockSpeed", &TMemoryModule::configuredSpeed, "type 17, 20h; type 17, 58h"},  // MT/s
    {"ConfiguredVoltage", &TMemoryModule::configuredMillivolts, "type 17, 26h"},
    {"Rank", &TMemoryModule::rank, "type 17, 1Bh bits 3:0"},
    {"ErrorMethodology", &TMemoryModule::errorCorrection,
     "type 16, 06h; property TotalWidth; property DataWidth"},
};

constexpr TCimClass<TMemoryModule> memoryModuleClass{memoryModuleClassName, memoryModuleRows};
constexpr const IClassDeclaration* classes[] = {&memoryModuleClass};

constexpr auto sourcePatterns = Join(smbiosSources, spdSources);

using TDeviceAddresses = std::unordered_map<std::uint16_t, std::vector<TSmbiosDeviceAddress>>;

// Groups the mapped addresses by the handle of their device.
TDeviceAddresses ReadDeviceAddresses(const std::vector<TSmbiosStructure>& structures) {
    constexpr std::uint8_t deviceAddressType = 20;
    TDeviceAddresses addresses;
    for (const TSmbiosStructure& structure : structures) {
        if (structure.GetType() != deviceAddressType) {
            continue;
        }
        const TSmbiosDeviceAddress address = ParseSmbiosDeviceAddress(structure);
        if (address.deviceHandle) {
            addresses[*address.deviceHandle].push_back(address);
        }
    }
    return addresses;
}

// Returns the position of a device if all of its address ranges agree on it.
std::optional<std::uint32_t> FindCommon(const std::vector<TSmbiosDeviceAddress>& addresses,
                                        std::optional<std::uint8_t> TSmbiosDeviceAddress::*member) {
    const auto& position = addresses.front().*member;
    const bool isCommon = std::ranges::all_of(
        addresses, [&](const TSmbiosDeviceAddress& address) { return address.*member == position; });
    return isCommon && position ? std::optional<std::uint32_t>(*position) : std::nullopt;
}

void SetWidths(const TSmbiosMemoryDevice& device, TMemoryModule& module) {
    constexpr std::uint16_t checkBitsOnly = 8;  // a module for error correction only has no data bits
    if (device.totalWidthBits.value_or(0) != 0) {
        module.totalWidthBits = device.totalWidthBits;
    }
    if (device.dataWidthBits.value_or(0) != 0 || device.totalWidthBits == checkBitsOnly) {
        module.dataWidthBits = device.dataWidthBits;
    }
}

void SetKinds(const TSmbiosMemoryDevice& device, TMemoryModule& module) {
    if (const auto* factor = device.formFactor ? FindMemoryFormFactor(*device.formFactor) : nullptr) {
        module.formFactor = factor->cimFormFactor;
        module.removalConditions = factor->removalConditions;
    }
    if (const auto* kind = device.kind ? FindMemoryKind(*device.kind) : nullptr) {
        module.memoryType = kind->cimMemoryType;
    }
}

// A module has the error correction of its array if it has check bits, which are bits in addition to its data
// bits. An array without error correction ignores check bits.
std::optional<std::string> FindModuleCorrection(const TSmbiosMemoryDevice& device,
                                                const std::vector<TSmbiosMemoryArray>& arrays) {
    constexpr std::uint8_t none = 3;
    const auto array = std::ranges::find(
        arrays, device.arrayHandle, [](const TSmbiosMemoryArray& row) { return std::optional(row.handle); });
    if (array == arrays.end() || !array->errorCorrection) {
        return std::nullopt;
    }
    const bool hasCheckBits = device.totalWidthBits.value_or(0) > device.dataWidthBits.value_or(0) &&
                              device.dataWidthBits.value_or(0) != 0;
    const auto name = FindErrorCorrection(*array->errorCorrection);
    return name && (array->errorCorrection == none || hasCheckBits) ? std::optional<std::string>(*name)
                                                                    : std::nullopt;
}

// Returns, for example, "Memory module, DDR4 DIMM, made in week 7 of 2019".
std::string Describe(const TSmbiosMemoryDevice& device, const TSpdModule* eeprom) {
    const auto* kind = device.kind ? FindMemoryKind(*device.kind) : nullptr;
    const auto* factor = device.formFactor ? FindMemoryFormFactor(*device.formFactor) : nullptr;
    std::string name(kind != nullptr ? kind->name : "");
    if (factor != nullptr && !name.ends_with(factor->name)) {  // "DDR2 FB-DIMM" contains the form factor
        name += (name.empty() ? "" : " ") + std::string(factor->name);
    }
    std::string description = "Memory module" + (name.empty() ? "" : ", " + name);
    if (eeprom != nullptr && eeprom->made) {
        description += ", made in week " + std::to_string(eeprom->made->week) + " of " +
                       std::to_string(eeprom->made->year);
    }
    return description;
}

// Firmware without a name for the manufacturer writes its JEDEC number: "00CE00B300CE".
bool IsManufacturerNumber(std::string_view text) {
    return IsHex(text) && std::ranges::any_of(text, IsDigit);
}

std::optional<std::string> MakeElementName(const TMemoryModule& module) {
    if (module.partNumber && module.manufacturer && !IsManufacturerNumber(*module.manufacturer)) {
        return *module.manufacturer + " " + *module.partNumber;
    }
    return module.partNumber;
}

TMemoryModule MakeModule(const TSmbiosMemoryDevice& device, const TSpdModule* eeprom,
                         const TDeviceAddresses& addresses, const std::vector<TSmbiosMemoryArray>& arrays) {
    TMemoryModule module;
    module.configuredSpeed = device.configuredSpeed;
    module.configuredMillivolts = device.configuredMillivolts;
    module.rank = device.rank;
    module.errorCorrection = FindModuleCorrection(device, arrays);
    module.description = Describe(device, eeprom);
    module.manufacturer = WithoutPlaceholder(device.manufacturer);
    module.partNumber = WithoutPlaceholder(device.part);
    module.serialNumber = WithoutPlaceholder(device.serial);
    module.bankLabel = WithoutPlaceholder(device.bank);
    module.capacityBytes = device.capacityBytes;
    module.speed = device.speed;
    SetWidths(device, module);
    SetKinds(device, module);
    if (const auto found = addresses.find(device.handle); found != addresses.end()) {
        module.positionInRow = FindCommon(found->second, &TSmbiosDeviceAddress::rowPosition);
        module.interleavePosition = FindCommon(found->second, &TSmbiosDeviceAddress::interleavePosition);
    }
    if (eeprom != nullptr) {
        module.partNumber = module.partNumber ? module.partNumber : eeprom->part;
        module.serialNumber = module.serialNumber ? module.serialNumber : eeprom->serial;
    }
    module.elementName = MakeElementName(module);
    return module;
}

// An empty socket may still have the texts of its last module, which are ignored.
std::vector<TModuleTexts> MakeModuleTexts(const std::vector<TSmbiosMemoryDevice>& sockets) {
    std::vector<TModuleTexts> texts;
    texts.reserve(sockets.size());
    for (const TSmbiosMemoryDevice& socket : sockets) {
        texts.push_back(socket.isPopulated
                            ? TModuleTexts{WithoutPlaceholder(socket.serial), WithoutPlaceholder(socket.part)}
                            : TModuleTexts{});
    }
    return texts;
}

void CollectMemoryModules(TCollection& collection) {
    const auto& structures = GetSmbios(collection).GetStructures();
    const auto sockets = ReadMemorySockets(structures);
    if (sockets.empty()) {
        return;  // an EEPROM could not be matched to a module
    }
    const auto addresses = ReadDeviceAddresses(structures);
    const auto arrays = ReadMemoryArrays(structures);
    const auto eeproms = ReadSpdModules(collection.GetFiles());
    const auto matches = MatchSpdModules(MakeModuleTexts(sockets), eeproms);
    auto keySources = MakeSocketKeySources(sockets);
    std::vector<TKeyedRecord<TMemoryModule>> modules;
    for (std::size_t i = 0; i < sockets.size(); ++i) {
        auto& entry = modules.emplace_back();
        entry.keySource = std::move(keySources[i]);
        if (sockets[i].isPopulated) {
            entry.record = MakeModule(sockets[i], matches[i], addresses, arrays);
            entry.record->place.structure = GetSmbios(collection).FindNumbered(memoryDeviceType, i);
        }
    }
    CommitKeyed(collection, memoryModuleClass, std::move(modules), &TMemoryModule::tag, "memory socket");
}

}  // namespace

extern constinit const TCollector memoryModuleCollector{
    .name = "memory",
    .description = "Memory modules in their sockets",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectMemoryModules,
};

}  // namespace NVORHOST
