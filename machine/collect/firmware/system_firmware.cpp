// CIM_BIOSElement: the system firmware, from the SMBIOS table, or from /sys/class/dmi/id without a table.
// CIM_SoftwareElement: the embedded controller's firmware, whose release the same sources have.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/dmi_folder.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/smbios_system.h"

namespace NVORHOST {
namespace {

struct TFirmware {
    std::optional<std::string> elementName, description, name, manufacturer, version;
    std::optional<TCIMDateTime> releaseDate;
    std::optional<bool> isPrimary;
};

constexpr TPropertyRow<TFirmware> biosRows[] = {
    {"ElementName", &TFirmware::elementName, "property Manufacturer; property Version"},
    {"Description", &TFirmware::description, "type 0, 14h or /sys/class/dmi/id/bios_release"},
    {"Name", &TFirmware::name, "constant"},
    {"Manufacturer", &TFirmware::manufacturer, "text type 0, 04h or /sys/class/dmi/id/bios_vendor"},
    {"Version", &TFirmware::version, "text type 0, 05h or /sys/class/dmi/id/bios_version"},
    {"ReleaseDate", &TFirmware::releaseDate, "date type 0, 08h or /sys/class/dmi/id/bios_date"},
    {"PrimaryBIOS", &TFirmware::isPrimary, "constant"},
};

constexpr TPropertyRow<TFirmware> controllerRows[] = {
    {"ElementName", &TFirmware::elementName, "property Version"},
    {"Description", &TFirmware::description, "constant"},
    {"Name", &TFirmware::name, "constant"},
    {"Version", &TFirmware::version, "type 0, 16h or /sys/class/dmi/id/ec_firmware_release"},
};

constexpr TCimClass<TFirmware> biosClass{"CIM_BIOSElement", biosRows};
constexpr TCimClass<TFirmware> controllerClass{"CIM_SoftwareElement", controllerRows};
constexpr const IClassDeclaration* classes[] = {&biosClass, &controllerClass};

constexpr auto sourcePatterns = Join(smbiosSources, std::array<TSourcePattern, 6>{
                                                        "/sys/class/dmi/id",
                                                        "/sys/class/dmi/id/bios_*",
                                                        "/sys/class/dmi/id/ec_firmware_release",
                                                        "/sys/devices/virtual/dmi/id",
                                                        "/sys/devices/virtual/dmi/id/bios_*",
                                                        "/sys/devices/virtual/dmi/id/ec_firmware_release",
                                                    });

// The day is all that the firmware gives; the time is marked as insignificant.
std::optional<TCIMDateTime> ToCimDate(const std::optional<std::string>& text) {
    constexpr std::uint8_t digitsOfDate = 8;
    const auto date = text ? ParseFirmwareDate(*text) : std::nullopt;
    if (!date) {
        return std::nullopt;
    }
    TCIMDateTime::TFields fields;
    fields.year = date->year;
    fields.month = date->month;
    fields.day = date->day;
    fields.significantDigits = digitsOfDate;
    return TCIMDateTime(fields);
}

std::optional<std::string> MakeElementName(const TFirmware& firmware) {
    if (firmware.manufacturer && firmware.version) {
        return *firmware.manufacturer + " " + *firmware.version;
    }
    return firmware.version ? firmware.version : firmware.manufacturer;
}

void CommitFirmware(TCollection& collection, const TSmbiosFirmware& source) {
    TFirmware firmware;
    firmware.manufacturer = WithoutPlaceholder(source.vendor);
    firmware.version = WithoutPlaceholder(source.version);
    firmware.releaseDate = ToCimDate(source.releaseDate);
    if (!firmware.manufacturer && !firmware.version && !firmware.releaseDate) {
        return;
    }
    firmware.name = "System firmware";
    firmware.elementName = MakeElementName(firmware);
    firmware.description = *firmware.name + (source.release ? ", release " + *source.release : "");
    firmware.isPrimary = true;
    collection.Commit(biosClass, firmware);
}

void CommitController(TCollection& collection, const TSmbiosFirmware& source) {
    if (!source.controllerRelease) {
        return;
    }
    TFirmware firmware;
    firmware.name = "Embedded controller firmware";
    firmware.elementName = *firmware.name + " " + *source.controllerRelease;
    firmware.description = firmware.name;
    firmware.version = source.controllerRelease;
    collection.Commit(controllerClass, firmware);
}

// The kernel writes no file for a release of FFh.
TSmbiosFirmware ReadExcerpt(const ISystemFiles& files) {
    const auto folder = FindDmiFolder(files);
    if (!folder) {
        return {};
    }
    const auto read = [&](std::string_view name) {
        return ReadAttribute(files, *folder + "/" + std::string(name));
    };
    TSmbiosFirmware firmware;
    firmware.vendor = read("bios_vendor");
    firmware.version = read("bios_version");
    firmware.releaseDate = read("bios_date");
    firmware.release = read("bios_release");
    firmware.controllerRelease = read("ec_firmware_release");
    return firmware;
}

TSmbiosFirmware ReadFirmware(TCollection& collection) {
    constexpr std::uint8_t firmwareType = 0;
    const TSmbiosSource& smbios = GetSmbios(collection);
    if (const TSmbiosStructure* structure = smbios.FindFirst(firmwareType)) {
        return ParseSmbiosFirmware(*structure);
    }
    return smbios.GetStructures().empty() ? ReadExcerpt(collection.GetFiles()) : TSmbiosFirmware{};
}

void CollectFirmware(TCollection& collection) {
    const TSmbiosFirmware source = ReadFirmware(collection);
    CommitFirmware(collection, source);
    CommitController(collection, source);
}

}  // namespace

extern constinit const TCollector systemFirmwareCollector{
    .name = "firmware",
    .description = "System firmware and the embedded controller's firmware",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectFirmware,
    .isForDocuments = false,
};

}  // namespace NVORHOST
