// CIM_VideoHead: one instance per connector of the display adapters, in the order of their keys.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/keyed_records.h"

#include <algorithm>

namespace NVORHOST {
namespace {

struct TOutput {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<std::uint16_t> enabledState;
    TInstancePlace place{};
};

constexpr TPropertyRow<TOutput> outputRows[] = {
    {"ElementName", &TOutput::elementName, "@"},
    {"Description", &TOutput::description, "@/status"},
    {"DeviceID", &TOutput::deviceId, "@"},
    {"EnabledState", &TOutput::enabledState, "@/enabled"},
};

constexpr TCimClass<TOutput> outputClass{"CIM_VideoHead", outputRows};
constexpr const IClassDeclaration* classes[] = {&outputClass};

constexpr std::string_view parent = "/sys/class/drm";

constexpr std::array<TSourcePattern, 4> sourcePatterns{
    parent,
    "/sys/class/drm/*",
    "/sys/class/drm/*/status",
    "/sys/class/drm/*/enabled",
};

// "HDMI-A-1" of "card0-HDMI-A-1".
std::optional<std::string> FindConnector(const std::string& name) {
    const auto dash = name.find('-');
    return name.starts_with("card") && dash != std::string::npos ? std::optional(name.substr(dash + 1))
                                                                 : std::nullopt;
}

// Returns the PCI address of the adapter of a connector from the link to its folder, which contains it before
// "drm"; nullopt for an adapter on another bus.
std::optional<std::string> FindAdapter(const ISystemFiles& files, const std::string& folder) {
    constexpr std::string_view device = "/drm/";
    const std::string target = files.ReadLink(folder).value;
    const auto end = target.find(device);
    if (end == std::string::npos) {
        return std::nullopt;
    }
    const std::string path = target.substr(0, end);
    const std::string name = path.substr(path.rfind('/') + 1);
    return std::ranges::count(name, ':') == 2 ? std::optional(name) : std::nullopt;
}

// CIM_EnabledLogicalElement.EnabledState.
std::optional<std::uint16_t> FindEnabledState(const std::optional<std::string>& word) {
    constexpr std::uint16_t enabled = 2;
    constexpr std::uint16_t disabled = 3;
    if (word == "enabled") {
        return enabled;
    }
    return word == "disabled" ? std::optional(disabled) : std::nullopt;
}

// The kernel keeps the status of its last look: reading it looks at no cable.
std::string Describe(const ISystemFiles& files, const std::string& folder) {
    const auto status = ReadAttribute(files, folder + "/status");
    const bool isKnown = status == "connected" || status == "disconnected";
    return "Display output" + (isKnown ? ", " + *status : "");
}

// The number of the card is left out of the key, because it depends on the order in which drivers are loaded.
void CollectVideoOutputs(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    std::vector<TKeyedRecord<TOutput>> outputs;
    for (const std::string& name : files.List(parent).value) {
        const auto connector = FindConnector(name);
        if (!connector) {
            continue;
        }
        const std::string folder = std::string(parent) + "/" + name;
        const auto adapter = FindAdapter(files, folder);
        TOutput output;
        output.place.folder = folder;
        output.elementName = connector;
        output.description = Describe(files, folder);
        output.enabledState = FindEnabledState(ReadAttribute(files, folder + "/enabled"));
        outputs.push_back({std::move(output), {adapter ? *adapter + " " + *connector : *connector, name}});
    }
    CommitKeyed(collection, outputClass, std::move(outputs), &TOutput::deviceId, "display output");
}

}  // namespace

extern constinit const TCollector videoOutputCollector{
    .name = "video-output",
    .description = "Outputs of the display adapters",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectVideoOutputs,
    .isForDocuments = false,
};

}  // namespace NVORHOST
