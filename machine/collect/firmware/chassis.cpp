// CIM_Chassis: one instance per chassis of the SMBIOS table; without a table one for the chassis of
// /sys/class/dmi/id.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/dmi_folder.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/named_place.h"
#include "machine/collect/frame/operational_status.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/smbios_system.h"

#include <algorithm>
#include <iterator>

namespace NVORHOST {
namespace {

struct TChassis {
    std::optional<std::string> elementName, description, manufacturer, version, serialNumber, sku, tag,
        userTracking, kindText;
    std::optional<TOperationalStatus> operationalStatus;
    std::optional<bool> hasLock;
    std::optional<std::uint16_t> powerCords, packageKind;
    std::optional<std::vector<std::uint16_t>> kinds;
    std::optional<float> heightInches;
    TInstancePlace place{};
};

struct TFoundChassis {
    TSmbiosChassis fields;
    const TSmbiosStructure* structure = nullptr;
};

constexpr TPropertyRow<TChassis> chassisRows[] = {
    {"ElementName", &TChassis::elementName, "property Manufacturer; property ChassisTypeDescription"},
    {"Description", &TChassis::description, "type 3, 11h"},
    {"OperationalStatus", &TChassis::operationalStatus, "type 3, 09h; type 3, 0Ah; type 3, 0Bh"},
    {"Manufacturer", &TChassis::manufacturer, "text type 3, 04h or /sys/class/dmi/id/chassis_vendor"},
    {"SKU", &TChassis::sku, "type 3, 15h and later"},
    {"SerialNumber", &TChassis::serialNumber, "text type 3, 07h or /sys/class/dmi/id/chassis_serial"},
    {"Tag", &TChassis::tag, "type 3, 05h or /sys/class/dmi/id/chassis_type"},
    {"Version", &TChassis::version, "text type 3, 06h or /sys/class/dmi/id/chassis_version"},
    {"UserTracking", &TChassis::userTracking, "text type 3, 08h or /sys/class/dmi/id/chassis_asset_tag"},
    {"LockPresent", &TChassis::hasLock, "type 3, 05h bit 7"},
    {"NumberOfPowerCords", &TChassis::powerCords, "type 3, 12h"},
    {"ChassisTypes", &TChassis::kinds, "type 3, 05h or /sys/class/dmi/id/chassis_type"},
    {"ChassisPackageType", &TChassis::packageKind, "type 3, 05h or /sys/class/dmi/id/chassis_type"},
    {"ChassisTypeDescription", &TChassis::kindText, "type 3, 05h or /sys/class/dmi/id/chassis_type"},
    {"Height", &TChassis::heightInches, "type 3, 11h"},
};

constexpr TCimClass<TChassis> chassisClass{"CIM_Chassis", chassisRows};
constexpr const IClassDeclaration* classes[] = {&chassisClass};

constexpr auto sourcePatterns = Join(smbiosSources, std::array<TSourcePattern, 4>{
                                                        "/sys/class/dmi/id",
                                                        "/sys/class/dmi/id/chassis_*",
                                                        "/sys/devices/virtual/dmi/id",
                                                        "/sys/devices/virtual/dmi/id/chassis_*",
                                                    });

constexpr std::string_view chassisWord = "Chassis";

// CIM_Chassis.ChassisTypes ends at 24, sealed-case PC, and has the codes of the firmware up to there.
std::optional<std::vector<std::uint16_t>> FindKinds(std::uint8_t kind) {
    constexpr std::uint8_t lastKind = 24;
    return kind <= lastKind ? std::optional(std::vector<std::uint16_t>{kind}) : std::nullopt;
}

// CIM_Chassis.ChassisPackageType reserves the codes of rack mount and multi-system chassis, and later codes
// depend on the version of the schema: all of these are 1, other.
std::uint16_t FindPackageKind(std::uint8_t kind) {
    constexpr std::uint16_t other = 1;
    constexpr std::uint8_t otherKinds[] = {0x17, 0x19};
    constexpr std::uint8_t lastKind = 0x1B;
    const bool isOther = kind > lastKind || std::ranges::find(otherKinds, kind) != std::end(otherKinds);
    return isOther ? other : kind;
}

void SetKind(std::uint8_t kind, TChassis& chassis) {
    const auto name = FindChassisKindName(kind);
    if (!name) {
        return;
    }
    chassis.kindText = *name;
    chassis.kinds = FindKinds(kind);
    chassis.packageKind = FindPackageKind(kind);
}

TChassis MakeChassis(const TFoundChassis& found) {
    const TSmbiosChassis& source = found.fields;
    TChassis chassis;
    chassis.place.structure = found.structure;
    chassis.manufacturer = WithoutPlaceholder(source.manufacturer);
    chassis.version = WithoutPlaceholder(source.version);
    chassis.serialNumber = WithoutPlaceholder(source.serial);
    chassis.userTracking = WithoutPlaceholder(source.assetTag);
    chassis.sku = WithoutPlaceholder(source.sku);
    chassis.operationalStatus =
        FindChassisStatus({source.bootUpState, source.powerState, source.thermalState});
    chassis.powerCords = source.powerCords;
    if (source.rackUnits) {
        constexpr float inchesPerRackUnit = 1.75F;
        chassis.heightInches = inchesPerRackUnit * static_cast<float>(*source.rackUnits);
    }
    if (source.kind) {
        SetKind(*source.kind, chassis);
    }
    if (source.hasLock) {
        chassis.hasLock = true;
    }
    chassis.description =
        std::string(chassisWord) +
        (source.rackUnits ? ", " + std::to_string(*source.rackUnits) + " rack units high" : "");
    const std::string kind = chassis.kindText.value_or(std::string(chassisWord));
    chassis.elementName = chassis.manufacturer ? *chassis.manufacturer + " " + kind : kind;
    return chassis;
}

std::vector<TFoundChassis> ReadTable(TCollection& collection) {
    constexpr std::uint8_t chassisType = 3;
    std::vector<TFoundChassis> rows;
    for (const TSmbiosStructure& structure : GetSmbios(collection).GetStructures()) {
        if (structure.GetType() == chassisType) {
            rows.push_back({ParseSmbiosChassis(structure), &structure});
        }
    }
    return rows;
}

// The kernel keeps the texts of the first chassis.
std::vector<TFoundChassis> ReadExcerpt(const ISystemFiles& files) {
    const auto folder = FindDmiFolder(files);
    if (!folder) {
        return {};
    }
    const auto read = [&](std::string_view name) {
        return ReadAttribute(files, *folder + "/chassis_" + std::string(name));
    };
    TSmbiosChassis chassis;
    chassis.manufacturer = read("vendor");
    chassis.kind = ReadNumber<std::uint8_t>(files, *folder + "/chassis_type");
    if (!chassis.manufacturer && !chassis.kind) {
        return {};
    }
    chassis.version = read("version");
    chassis.assetTag = read("asset_tag");
    chassis.serial = read("serial");
    return {{std::move(chassis)}};
}

// A chassis has no unique name. Its key is "Chassis", plus its 1-based position if there are several;
// /sys/class/dmi/id has the first only, so a single chassis gets the same key with and without root.
void CollectChassis(TCollection& collection) {
    auto sources = ReadTable(collection);
    if (sources.empty() && GetSmbios(collection).GetStructures().empty()) {
        sources = ReadExcerpt(collection.GetFiles());
    }
    const std::vector<TNamedPlace> places(sources.size(),
                                          TNamedPlace{std::string(chassisWord), std::nullopt});
    auto keySources = MakePlaceKeySources(places, "chassis");
    std::vector<TKeyedRecord<TChassis>> entries;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        entries.push_back({MakeChassis(sources[i]), std::move(keySources[i])});
    }
    CommitKeyed(collection, chassisClass, std::move(entries), &TChassis::tag, "enclosure");
}

}  // namespace

extern constinit const TCollector chassisCollector{
    .name = "chassis",
    .description = "Chassis",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectChassis,
    .isForDocuments = false,
};

}  // namespace NVORHOST
