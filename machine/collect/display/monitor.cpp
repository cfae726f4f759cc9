// CIM_DesktopMonitor: one instance per connector of a display adapter whose monitor has a valid EDID.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/identifying_info.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/parse/edid.h"
#include "machine/parse/placeholders.h"
#include "text/hex.h"

namespace NVORHOST {
namespace {

struct TMonitor {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<std::vector<std::string>> identities, identityDescriptions;
    TInstancePlace place{};
};

constexpr TPropertyRow<TMonitor> monitorRows[] = {
    {"ElementName", &TMonitor::elementName, "@/edid descriptor FCh; @/edid 08h; @/edid 0Ah"},
    {"Description", &TMonitor::description, "@/edid 10h; @/edid 15h"},
    {"DeviceID", &TMonitor::deviceId, "@/edid 08h; @/edid 0Ah; @/edid 0Ch"},
    {"OtherIdentifyingInfo", &TMonitor::identities,
     "[Manufacturer] @/edid 08h; [Product code] @/edid 0Ah; [Serial number] @/edid descriptor FFh; [Serial "
     "number] @/edid 0Ch"},
    {"IdentifyingDescriptions", &TMonitor::identityDescriptions, "property OtherIdentifyingInfo"},
};

constexpr TCimClass<TMonitor> monitorClass{"CIM_DesktopMonitor", monitorRows};
constexpr const IClassDeclaration* classes[] = {&monitorClass};

constexpr TSourcePattern sourcePatterns[] = {
    "/sys/class/drm",
    "/sys/class/drm/*/edid",
};

std::string DescribeDate(const TEdid& edid) {
    if (!edid.year) {
        return {};
    }
    const std::string year = std::to_string(*edid.year);
    if (edid.isModelYear) {
        return ", model of " + year;
    }
    return edid.week ? ", made in week " + std::to_string(*edid.week) + " of " + year : ", made in " + year;
}

// Returns, for example, "Monitor, 597 x 336 mm, made in week 29 of 2021".
std::string Describe(const TEdid& edid) {
    std::string description = "Monitor";
    if (edid.widthMillimetres && edid.heightMillimetres) {
        description += ", " + std::to_string(*edid.widthMillimetres) + " x " +
                       std::to_string(*edid.heightMillimetres) + " mm";
    }
    return description + DescribeDate(edid);
}

// The text is the serial number on the label of the monitor; the number may differ from it.
std::optional<std::string> FindSerial(const TEdid& edid) {
    if (auto text = WithoutPlaceholder(edid.serialText)) {
        return text;
    }
    return edid.serialNumber ? WithoutPlaceholder(std::to_string(*edid.serialNumber)) : std::nullopt;
}

// The key of a monitor is maker, product code and serial number, as serial numbers are unique among the
// monitors of one product only. Monitors with the same key get their connectors appended, whose
// names ("HDMI-A-1") are unique for each adapter.
TKeyedRecord<TMonitor> MakeEntry(const TEdid& edid, std::string connector) {
    constexpr int codeDigits = 4;
    const std::string code = ToHexDigits(edid.productCode, codeDigits, EHexCase::upper);
    const auto serial = FindSerial(edid);
    TIdentifyingInfo info;
    info.Add("Manufacturer", edid.maker);
    info.Add("Product code", code);
    info.Add("Serial number", serial);
    TMonitor monitor;
    monitor.elementName = edid.name ? edid.name : edid.maker + " " + code;
    monitor.description = Describe(edid);
    monitor.identities = std::move(info.values);
    monitor.identityDescriptions = std::move(info.descriptions);
    return {std::move(monitor),
            {edid.maker + "-" + code + (serial ? "-" + *serial : ""), std::move(connector)}};
}

// Returns "HDMI-A-1" for "card0-HDMI-A-1"; nullopt for a name that is not a connector. The number of the card
// is left out because it depends on the order in which drivers are loaded.
std::optional<std::string> FindConnector(const std::string& name) {
    const auto dash = name.find('-');
    return name.starts_with("card") && dash != std::string::npos ? std::optional(name.substr(dash + 1))
                                                                 : std::nullopt;
}

void CollectMonitors(TCollection& collection) {
    constexpr std::string_view parent = "/sys/class/drm";
    const ISystemFiles& files = collection.GetFiles();
    std::vector<TKeyedRecord<TMonitor>> monitors;
    for (const std::string& name : files.List(parent).value) {
        auto connector = FindConnector(name);
        if (!connector) {
            continue;
        }
        // The kernel keeps the bytes; the file is empty if nothing is connected.
        const auto bytes = files.ReadText(std::string(parent) + "/" + name + "/edid");
        if (const auto edid = ParseEdid(bytes.value)) {
            monitors.push_back(MakeEntry(*edid, std::move(*connector)));
            monitors.back().record->place.folder = std::string(parent) + "/" + name;
        }
    }
    CommitKeyed(collection, monitorClass, std::move(monitors), &TMonitor::deviceId, "monitor");
}

}  // namespace

extern constinit const TCollector monitorCollector{
    .name = "monitor",
    .description = "Monitors on the display adapters",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectMonitors,
    .isForDocuments = false,
};

}  // namespace NVORHOST
