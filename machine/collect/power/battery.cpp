// CIM_Battery: one instance per battery of /sys/class/power_supply that powers the machine; without any one
// per battery of the SMBIOS table.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/identifying_info.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/smbios_power.h"
#include "text/find_row.h"

namespace NVORHOST {
namespace {

struct TBattery {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<std::vector<std::string>> identities, identityDescriptions;
    std::optional<std::uint16_t> chemistry;
    std::optional<std::uint32_t> designMilliwattHours, fullMilliwattHours, cycles;
    std::optional<std::uint64_t> designMillivolts;
    TInstancePlace place{};
};

constexpr TPropertyRow<TBattery> batteryRows[] = {
    {"ElementName", &TBattery::elementName, "property OtherIdentifyingInfo"},
    {"Description", &TBattery::description, "constant"},
    {"DeviceID", &TBattery::deviceId,
     "text @/serial_number; @; text @type 22, 07h; @type 22, 10h; text @type 22, 04h"},
    {"OtherIdentifyingInfo", &TBattery::identities,
     "[Manufacturer] text @/manufacturer; [Manufacturer] text @type 22, 05h; [Model] text @/model_name; "
     "[Model] text @type 22, 08h; [Serial number] text @/serial_number; [Serial number] text @type 22, 07h"},
    {"IdentifyingDescriptions", &TBattery::identityDescriptions, "property OtherIdentifyingInfo"},
    {"Chemistry", &TBattery::chemistry, "@/technology; @type 22, 09h"},
    {"DesignCapacity", &TBattery::designMilliwattHours,
     "number @/energy_full_design; number @/charge_full_design; @type 22, 0Ah; @type 22, 15h"},
    {"FullChargeCapacity", &TBattery::fullMilliwattHours, "number @/energy_full; number @/charge_full"},
    {"DesignVoltage", &TBattery::designMillivolts, "number @/voltage_min_design; @type 22, 0Ch"},
    {"RechargeCount", &TBattery::cycles, "number @/cycle_count"},
};

constexpr TCimClass<TBattery> batteryClass{"CIM_Battery", batteryRows};
constexpr const IClassDeclaration* classes[] = {&batteryClass};

constexpr auto sourcePatterns = Join(smbiosSources, std::array<TSourcePattern, 14>{
                                                        "/sys/class/power_supply",
                                                        "/sys/class/power_supply/*/type",
                                                        "/sys/class/power_supply/*/scope",
                                                        "/sys/class/power_supply/*/present",
                                                        "/sys/class/power_supply/*/manufacturer",
                                                        "/sys/class/power_supply/*/model_name",
                                                        "/sys/class/power_supply/*/serial_number",
                                                        "/sys/class/power_supply/*/technology",
                                                        "/sys/class/power_supply/*/cycle_count",
                                                        "/sys/class/power_supply/*/voltage_min_design",
                                                        "/sys/class/power_supply/*/energy_full_design",
                                                        "/sys/class/power_supply/*/energy_full",
                                                        "/sys/class/power_supply/*/charge_full_design",
                                                        "/sys/class/power_supply/*/charge_full",
                                                    });

struct TTechnology {
    std::string_view word;  // word that sysfs has
    std::uint16_t code;     // CIM_Battery.Chemistry
};

// Linux, Documentation/ABI/testing/sysfs-class-power. CIM has no code for the last two.
constexpr TTechnology technologies[] = {
    {"NiCd", 4}, {"NiMH", 5}, {"Li-ion", 6}, {"Li-poly", 8}, {"LiFe", 1}, {"LiMn", 1},
};

struct TIdentity {
    std::optional<std::string> manufacturer, model, serial;
};

// The key of a battery is its serial number, else its position.
TKeyedRecord<TBattery> MakeEntry(TBattery battery, const TIdentity& identity, std::string position) {
    TIdentifyingInfo info;
    info.Add("Manufacturer", identity.manufacturer);
    info.Add("Model", identity.model);
    info.Add("Serial number", identity.serial);
    battery.description = "Battery";
    battery.identities = std::move(info.values);
    battery.identityDescriptions = std::move(info.descriptions);
    battery.elementName = identity.model;
    if (identity.manufacturer && identity.model) {
        battery.elementName = *identity.manufacturer + " " + *identity.model;
    }
    return {std::move(battery), {identity.serial, std::move(position)}};
}

// Batteries of wireless keyboards and the like come and go with these devices.
bool IsBatteryOfTheMachine(const ISystemFiles& files, const std::string& folder) {
    constexpr std::uint8_t isEmptyBay = 0;
    return ReadAttribute(files, folder + "/type") == "Battery" &&
           ReadAttribute(files, folder + "/scope") != "Device" &&
           ReadNumber<std::uint8_t>(files, folder + "/present") != isEmptyBay;
}

std::optional<std::uint64_t> ReadPositive(const ISystemFiles& files, const std::string& path) {
    const auto value = ReadNumber<std::uint64_t>(files, path);
    return value == 0 ? std::nullopt : value;
}

std::optional<std::uint32_t> ToWord(std::uint64_t value) {
    return value <= UINT32_MAX ? std::optional(static_cast<std::uint32_t>(value)) : std::nullopt;
}

// Reads a capacity in milliwatt-hours. Firmware reports either microwatt-hours or microampere-hours; the
// latter are worth their product with the design voltage in microvolts.
std::optional<std::uint32_t> ReadCapacity(const ISystemFiles& files, const std::string& folder,
                                          const std::string& name, std::optional<std::uint64_t> microvolts) {
    constexpr std::uint64_t microPerMilli = 1000;
    constexpr std::uint64_t productPerMilli = 1'000'000'000;
    constexpr std::uint64_t largest = UINT32_MAX;  // keeps the product in 64 bits
    if (const auto energy = ReadPositive(files, folder + "/energy_" + name)) {
        return ToWord(*energy / microPerMilli);
    }
    const auto charge = ReadPositive(files, folder + "/charge_" + name);
    if (!charge || !microvolts || *charge > largest || *microvolts > largest) {
        return std::nullopt;
    }
    return ToWord(*charge * *microvolts / productPerMilli);
}

TKeyedRecord<TBattery> ReadBattery(const ISystemFiles& files, const std::string& folder,
                                   const std::string& name) {
    constexpr std::uint64_t microPerMilli = 1000;
    const auto read = [&](std::string_view attribute) {
        return WithoutPlaceholder(ReadAttribute(files, folder + "/" + std::string(attribute)));
    };
    TBattery battery;
    battery.place.folder = folder;
    const auto microvolts = ReadPositive(files, folder + "/voltage_min_design");
    if (microvolts) {
        battery.designMillivolts = *microvolts / microPerMilli;
    }
    battery.designMilliwattHours = ReadCapacity(files, folder, "full_design", microvolts);
    battery.fullMilliwattHours = ReadCapacity(files, folder, "full", microvolts);
    // Firmware that does not count reports 0.
    if (const auto cycles = ReadPositive(files, folder + "/cycle_count")) {
        battery.cycles = ToWord(*cycles);
    }
    const auto technology = ReadAttribute(files, folder + "/technology");
    battery.chemistry =
        FindCell(technologies, &TTechnology::word, technology.value_or(""), &TTechnology::code);
    return MakeEntry(std::move(battery), {read("manufacturer"), read("model_name"), read("serial_number")},
                     name);
}

using TBatteries = std::vector<TKeyedRecord<TBattery>>;

TBatteries ReadKernelBatteries(const ISystemFiles& files) {
    constexpr std::string_view parent = "/sys/class/power_supply";
    TBatteries batteries;
    for (const std::string& name : files.List(parent).value) {
        const std::string folder = std::string(parent) + "/" + name;
        if (IsBatteryOfTheMachine(files, folder)) {
            batteries.push_back(ReadBattery(files, folder, name));
        }
    }
    return batteries;
}

// DSP0134, 7.23.1: the codes are those of CIM_Battery.Chemistry; 02h is unknown.
std::optional<std::uint16_t> FindChemistry(std::optional<std::uint8_t> code) {
    constexpr std::uint8_t unknown = 2;
    constexpr std::uint8_t last = 8;
    const bool isKnown = code && *code != 0 && *code != unknown && *code <= last;
    return isKnown ? std::optional<std::uint16_t>(*code) : std::nullopt;
}

TBatteries ReadFirmwareBatteries(TCollection& collection) {
    constexpr std::uint8_t batteryType = 22;
    TBatteries batteries;
    for (const TSmbiosStructure& structure : GetSmbios(collection).GetStructures()) {
        if (structure.GetType() != batteryType) {
            continue;
        }
        const TSmbiosBattery source = ParseSmbiosBattery(structure);
        TBattery battery;
        battery.place.structure = &structure;
        battery.chemistry = FindChemistry(source.chemistry);
        battery.designMilliwattHours = source.designCapacityMilliwattHours;
        battery.designMillivolts = source.designVoltageMillivolts;
        const TIdentity identity{WithoutPlaceholder(source.manufacturer), WithoutPlaceholder(source.name),
                                 WithoutPlaceholder(source.serial)};
        batteries.push_back(MakeEntry(
            std::move(battery), identity,
            WithoutPlaceholder(source.location).value_or("battery " + std::to_string(batteries.size() + 1))));
    }
    return batteries;
}

void CollectBatteries(TCollection& collection) {
    TBatteries batteries = ReadKernelBatteries(collection.GetFiles());
    if (batteries.empty()) {
        batteries = ReadFirmwareBatteries(collection);
    }
    CommitKeyed(collection, batteryClass, std::move(batteries), &TBattery::deviceId, "battery pack");
}

}  // namespace

extern constinit const TCollector batteryCollector{
    .name = "battery",
    .description = "Batteries that power the machine",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectBatteries,
    .isForDocuments = false,
};

}  // namespace NVORHOST
