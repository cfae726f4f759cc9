#include "fleet/report/machine_facts.h"

#include "fleet/model/property_part.h"
#include "inventory/compare/part.h"
#include "inventory/report/report_inventory.h"
#include "text/numbers.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace NFLEET {
namespace {

using NINVENTORY::Show;
using NINVENTORY::TResource;

// Ports with hardware of their own.
constexpr std::string_view portTypes[] = {"EthernetPort", "WiFiPort", "IBPort"};
// Two parts of these types have different serial numbers or addresses. Several machines may share a chassis
// and its power supplies, and the identity of a processor may be that of its kind.
constexpr std::string_view uniqueTypes[] = {"Battery",        "Card",         "DiskDrive", "IBPort",
                                            "PhysicalMemory", "EthernetPort", "TapeDrive", "WiFiPort"};

template <typename TRange>
bool Contains(const TRange& words, std::string_view word) {
    return std::ranges::find(words, word) != std::end(words);
}

// Adds the product of a property and a factor. One unknown value makes the sum unknown.
void Add(const TResource& resource, std::string_view property, std::uint64_t factor, std::size_t count,
         std::optional<std::uint64_t>& sum) {
    const auto number = NVORHOST::ParseNumber<std::uint64_t>(resource.GetText(property));
    if ((count > 1 && !sum) || !number || *number > (UINT64_MAX - sum.value_or(0)) / factor) {
        sum = std::nullopt;
        return;
    }
    sum = sum.value_or(0) + *number * factor;
}

// Adds what a resource of one type contributes.
struct TFigureRow {
    std::string_view type;
    void (*add)(const TResource& resource, TMachineFigures& figures);
};

constexpr std::uint64_t bytesPerKilobyte = 1000;

constexpr TFigureRow figureRows[] = {
    {"PhysicalMemory",
     [](const TResource& resource, TMachineFigures& figures) {
         Add(resource, "Capacity", 1, ++figures.modules, figures.memoryBytes);
     }},
    {"DiskDrive",
     [](const TResource& resource, TMachineFigures& figures) {
         Add(resource, "MaxMediaSize", bytesPerKilobyte, ++figures.disks, figures.diskBytes);
     }},
    {"Processor",
     [](const TResource& resource, TMachineFigures& figures) {
         if (++figures.processors == 1) {
             figures.processor = Show(resource, "Name");
         }
     }},
    {"BIOSElement",
     [](const TResource& resource, TMachineFigures& figures) {
         figures.firmware = Show(resource, "Version");
         figures.firmwareDate = Show(resource, "ReleaseDate");
     }},
    {"OperatingSystem",
     [](const TResource& resource, TMachineFigures& figures) { figures.system = Show(resource, "Name"); }},
};

}  // namespace

TMachineFigures SumUp(const std::vector<TResource>& resources) {
    TMachineFigures figures;
    for (const TResource& resource : resources) {
        const auto* const row = std::ranges::find(figureRows, resource.type, &TFigureRow::type);
        if (row != std::end(figureRows)) {
            row->add(resource, figures);
        }
        figures.ports += Contains(portTypes, resource.type) ? 1 : 0;
    }
    return figures;
}

std::vector<TPartIdentity> ListIdentities(const TResource& resource) {
    const NINVENTORY::TPartType& type = NINVENTORY::GetPartType(resource.type);
    std::vector<TPartIdentity> identities;
    if (type.isAuxiliary || type.isSingleton) {
        return identities;
    }
    const auto add = [&](std::string value, bool isUnique) {
        const bool isKnown =
            std::ranges::find(identities, value, &TPartIdentity::identity) != identities.end();
        if (!value.empty() && !isKnown) {
            identities.push_back({std::move(value), isUnique});
        }
    };
    for (const std::string_view serial : type.serials) {
        add(GetFact(resource, serial), Contains(uniqueTypes, resource.type));
    }
    constexpr std::string_view key = "DeviceID";
    if (resource.type == "DiskDrive" && GetTypeParts(resource.type).Get(key) == EPropertyPart::identifying) {
        add(std::string(resource.GetText(key)), /*isUnique=*/false);
    }
    return identities;
}

std::string DescribeKind(const TResource& resource) {
    std::string kind = resource.type;
    for (const std::string_view property : {"Manufacturer", "PartNumber", "Model"}) {
        kind.append("\n").append(resource.GetText(property));
    }
    return kind;
}

}  // namespace NFLEET
