#include "fleet/ask/fleet_summary.h"

#include "fleet/ask/part_ages.h"
#include "fleet/ask/version_index.h"
#include "fleet/model/assembly.h"
#include "inventory/model/shown_value.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NFLEET {
namespace {

using NINVENTORY::TResource;

std::string Show(const TResource& resource, std::string_view property) {
    const NINVENTORY::TProperty* const found = resource.Find(property);
    return found == nullptr ? std::string() : ShowValue(resource.type, *found);
}

std::string JoinShown(const TResource& resource, std::initializer_list<std::string_view> properties) {
    std::string text;
    for (const std::string_view property : properties) {
        const std::string shown = Show(resource, property);
        text += (text.empty() || shown.empty() ? "" : " ") + shown;
    }
    return text;
}

// A group of the summary: what is counted of the resources of a type. Machines are counted only where each
// has one resource of the type, because one with several would be counted several times.
struct TGroup {
    std::string_view name;
    std::string_view type;
    bool isSingle;
    std::string (*describe)(const TResource& resource);
};

constexpr TGroup groups[] = {
    {"memory", "OperatingSystem", true,
     [](const TResource& resource) { return Show(resource, "TotalVisibleMemorySize"); }},
    {"memory modules", "PhysicalMemory", false,
     [](const TResource& resource) {
         return JoinShown(resource, {"Capacity", "MemoryType", "Speed", "PartNumber"});
     }},
    {"disks", "DiskDrive", false,
     [](const TResource& resource) {
         return JoinShown(resource, {"Name", "MaxMediaSize"});
     }},
    {"processors", "Processor", false, [](const TResource& resource) { return Show(resource, "Name"); }},
    {"firmware", "BIOSElement", true,
     [](const TResource& resource) {
         return JoinShown(resource, {"Manufacturer", "Version", "ReleaseDate"});
     }},
    {"systems", "OperatingSystem", true,
     [](const TResource& resource) {
         return JoinShown(resource, {"Name", "Version"});
     }},
};

constexpr std::string_view agedType = "DiskDrive";

struct TCounts {
    std::uint64_t machines = 0;
    std::uint64_t parts = 0;
};

// Appends the values of a group, the commonest first.
void AppendGroup(std::string_view group, bool countsMachines, const std::map<std::string, TCounts>& values,
                 TAnswer& answer) {
    std::vector<std::pair<std::string, TCounts>> sorted(values.begin(), values.end());
    std::ranges::stable_sort(sorted, std::greater(), [](const auto& entry) { return entry.second.parts; });
    for (auto& [value, counts] : sorted) {
        answer.rows.push_back({std::string(group), MakeTextCell(value),
                               countsMachines ? TCell(static_cast<std::int64_t>(counts.machines)) : TCell(),
                               static_cast<std::int64_t>(counts.parts)});
    }
}

void AppendModels(const std::vector<TMachine>& machines, TAnswer& answer) {
    std::map<std::string, TCounts> models;
    for (const TMachine& machine : machines) {
        const std::string& vendor = machine.facts.vendor;
        TCounts& counts = models[vendor + (vendor.empty() ? "" : " ") + machine.facts.model];
        ++counts.machines;
        ++counts.parts;
    }
    AppendGroup("models", /*countsMachines=*/true, models, answer);
}

std::map<std::string, TCounts> CountValues(const TGroup& group, const std::vector<TVersionCount>& counts,
                                           const TVersionIndex& versions) {
    std::map<std::string, TCounts> values;
    for (const TVersionCount& count : counts) {
        const TVersion* const version = count.type == group.type ? versions.Find(count.version) : nullptr;
        if (version != nullptr) {
            TCounts& sum = values[group.describe(AssembleResource({}, *version))];
            sum.machines += count.machines;
            sum.parts += count.resources;
        }
    }
    return values;
}

// Appends the ages in their order.
void AppendAges(const std::string& group, const std::vector<TAgeCount>& ages, TAnswer& answer) {
    for (const TAgeCount& age : ages) {
        answer.rows.push_back({group, std::string(age.span), TCell(), static_cast<std::int64_t>(age.parts)});
    }
}

}  // namespace

TAnswer SummarizeFleet(IFleetStore& store) {
    TAnswer answer{
        .question = "summary",
        .columns = {{"group", "group"}, {"value", "value"}, {"machines", "machines"}, {"parts", "parts"}},
        .emptyText = "no machines"};
    const std::vector<TMachine> machines = store.ReadMachines();
    AppendModels(machines, answer);
    std::vector<std::string> types;
    for (const TGroup& group : groups) {
        types.emplace_back(group.type);
    }
    std::ranges::sort(types);
    types.erase(std::unique(types.begin(), types.end()), types.end());
    const auto counts = store.CountVersions({.model = std::nullopt, .types = types});
    const TVersionIndex versions(store, counts);
    for (const TGroup& group : groups) {
        AppendGroup(group.name, group.isSingle, CountValues(group, counts, versions), answer);
        if (group.type == agedType) {
            AppendAges("disks by age", CountAges(store, machines, std::string(agedType)), answer);
        }
    }
    return answer;
}

}  // namespace NFLEET
