// CIM_PowerSupply: one instance per power supply of the SMBIOS table that is present.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/identifying_info.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/smbios_power.h"

namespace NVORHOST {
namespace {

struct TSupply {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<std::vector<std::string>> identities, identityDescriptions;
    std::optional<bool> isSwitching;
    std::optional<std::uint32_t> outputMilliwatts;
    TInstancePlace place{};
};

constexpr TPropertyRow<TSupply> supplyRows[] = {
    {"ElementName", &TSupply::elementName, "text type 39, 06h"},
    {"Description", &TSupply::description, "type 39, 0Eh bit 0"},
    {"DeviceID", &TSupply::deviceId, "text type 39, 08h; text type 39, 05h"},
    {"OtherIdentifyingInfo", &TSupply::identities,
     "[Manufacturer] text type 39, 07h; [Part number] text type 39, 0Ah; [Revision] text type 39, 0Bh; "
     "[Serial number] text type 39, 08h; [Asset tag] text type 39, 09h; [Location] text type 39, 05h"},
    {"IdentifyingDescriptions", &TSupply::identityDescriptions, "property OtherIdentifyingInfo"},
    {"IsSwitchingSupply", &TSupply::isSwitching, "type 39, 0Eh bits 13:10"},
    {"TotalOutputPower", &TSupply::outputMilliwatts, "type 39, 0Ch"},
};

constexpr TCimClass<TSupply> supplyClass{"CIM_PowerSupply", supplyRows};
constexpr const IClassDeclaration* classes[] = {&supplyClass};

// DSP0134, 7.40.1. The other types do not determine whether a supply is switching.
std::optional<bool> FindIsSwitching(std::optional<std::uint8_t> kind) {
    constexpr std::uint8_t linear = 3;
    constexpr std::uint8_t switching = 4;
    return kind == linear || kind == switching ? std::optional(kind == switching) : std::nullopt;
}

void SetIdentities(const TSmbiosPowerSupply& source, TSupply& supply) {
    TIdentifyingInfo info;
    info.Add("Manufacturer", WithoutPlaceholder(source.manufacturer));
    info.Add("Part number", WithoutPlaceholder(source.partNumber));
    info.Add("Revision", WithoutPlaceholder(source.revision));
    info.Add("Serial number", WithoutPlaceholder(source.serial));
    info.Add("Asset tag", WithoutPlaceholder(source.assetTag));
    info.Add("Location", WithoutPlaceholder(source.location));
    supply.identities = std::move(info.values);
    supply.identityDescriptions = std::move(info.descriptions);
}

TSupply MakeSupply(const TSmbiosPowerSupply& source) {
    constexpr std::uint32_t milliwattsPerWatt = 1000;
    TSupply supply;
    supply.elementName = WithoutPlaceholder(source.name);
    supply.description = source.isHotReplaceable == true ? "Hot-replaceable power supply" : "Power supply";
    supply.isSwitching = FindIsSwitching(source.kind);
    if (source.maxPowerWatts && *source.maxPowerWatts != 0) {
        supply.outputMilliwatts = *source.maxPowerWatts * milliwattsPerWatt;
    }
    SetIdentities(source, supply);
    return supply;
}

// The key of a supply is its serial number, else its location, else its 1-based number in the table.
void CollectPowerSupplies(TCollection& collection) {
    constexpr std::uint8_t supplyType = 39;
    std::size_t number = 0;
    std::vector<TKeyedRecord<TSupply>> supplies;
    for (const TSmbiosStructure& structure : GetSmbios(collection).GetStructures()) {
        if (structure.GetType() != supplyType) {
            continue;
        }
        ++number;
        const TSmbiosPowerSupply source = ParseSmbiosPowerSupply(structure);
        if (source.isPresent == true) {
            const auto location = WithoutPlaceholder(source.location);
            TSupply supply = MakeSupply(source);
            supply.place.structure = &structure;
            supplies.push_back({std::move(supply),
                                {WithoutPlaceholder(source.serial),
                                 location.value_or("power supply " + std::to_string(number))}});
        }
    }
    CommitKeyed(collection, supplyClass, std::move(supplies), &TSupply::deviceId, "power supply unit");
}

}  // namespace

extern constinit const TCollector powerSupplyCollector{
    .name = "power-supply",
    .description = "Power supplies",
    .fills = classes,
    .reads = smbiosSources,
    .collect = CollectPowerSupplies,
    .isForDocuments = false,
};

}  // namespace NVORHOST
