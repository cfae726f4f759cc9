#include "fleet/ask/machine_changes.h"

#include "fleet/ask/machine_list.h"
#include "fleet/model/property_part.h"
#include "inventory/compare/comparison.h"
#include "inventory/compare/part.h"
#include "inventory/model/shown_value.h"
#include "inventory/write/part_words.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace NFLEET {
namespace {

using NINVENTORY::TProperty;
using TMachines = std::unordered_map<TMachineId, TMachine, TDigestHash>;

// The rows that end and begin with one inventory.
struct TSides {
    std::vector<const TPresence*> before, after;
};

// Ordered by time and by the name of the machine, so that the order does not depend on the engine.
struct TPlaceInTime {
    TSeconds time;
    std::string name;
    TMachineScope place;

    auto operator<=>(const TPlaceInTime&) const = default;
};

bool IsIn(TSeconds time, const TChangeQuery& query) {
    return time != always && time != open && time > query.since && time <= query.until;
}

std::map<TPlaceInTime, TSides> GroupByInventory(const std::vector<TPresence>& rows, const TMachines& machines,
                                                const TChangeQuery& query) {
    std::map<TPlaceInTime, TSides> groups;
    for (const TPresence& row : rows) {
        const auto machine = machines.find(row.place.machine);
        if (machine == machines.end() || !IsCurrentScope(machine->second.usesSnapshot, row.place.scope)) {
            continue;
        }
        const std::string name = NameMachine(machine->second);
        if (IsIn(row.until, query)) {
            groups[{row.until, name, row.place}].before.push_back(&row);
        }
        if (IsIn(row.since, query)) {
            groups[{row.since, name, row.place}].after.push_back(&row);
        }
    }
    return groups;
}

NINVENTORY::TInventory MakeInventory(const std::vector<const TPresence*>& rows, EScope scope,
                                     const TVersionIndex& versions) {
    NINVENTORY::TInventory inventory;
    inventory.documents.emplace_back().kind = scope == EScope::hardware ? NINVENTORY::EDocument::hardware
                                              : scope == EScope::snapshot
                                                  ? NINVENTORY::EDocument::collection
                                                  : NINVENTORY::EDocument::systemInformation;
    for (const TPresence* const row : rows) {
        inventory.resources.push_back(versions.Assemble(*row));
    }
    return inventory;
}

// A scope has the same types in all of its inventories, so that a type on one side only is a difference.
void CoverTypes(NINVENTORY::TInventory& before, NINVENTORY::TInventory& after) {
    for (const auto* const inventory : {&before, &after}) {
        for (const NINVENTORY::TResource& resource : inventory->resources) {
            before.types.push_back(resource.type);
        }
    }
    std::ranges::sort(before.types);
    before.types.erase(std::unique(before.types.begin(), before.types.end()), before.types.end());
    after.types = before.types;
}

TCell MakeCell(const std::string& type, const TProperty* property) {
    if (property == nullptr || property->shape == NINVENTORY::EShape::null) {
        return {};
    }
    std::string raw;
    for (const std::string& value : property->values) {
        raw += (&value == &property->values.front() ? "" : ", ") + value;
    }
    return TShownValue{ShowValue(type, *property), std::move(raw)};
}

// Returns the serial number or address that distinguishes parts of one kind; empty if there is none.
std::string FindIdentityOf(const NINVENTORY::TResource& resource) {
    for (const std::string_view serial : NINVENTORY::GetPartType(resource.type).serials) {
        if (std::string value = GetFact(resource, serial); !value.empty()) {
            return value;
        }
    }
    constexpr std::string_view key = "DeviceID";
    return GetTypeParts(resource.type).Get(key) == EPropertyPart::identifying
               ? std::string(resource.GetText(key))
               : std::string();
}

void AppendRows(const NINVENTORY::TDifference& difference, TChangeRow row, std::vector<TChangeRow>& rows) {
    const NINVENTORY::TResource& resource = difference.GetResource();
    row.change = GetWord(difference.change);
    row.type = resource.type;
    row.resourceId = resource.id;
    row.part = DescribePart(resource);
    row.identity = FindIdentityOf(resource);
    if (difference.properties.empty()) {
        rows.push_back(std::move(row));
        return;
    }
    for (const NINVENTORY::TPropertyDifference& property : difference.properties) {
        row.property = property.GetName();
        row.before = MakeCell(resource.type, property.before);
        row.after = MakeCell(resource.type, property.after);
        rows.push_back(row);
    }
}

TMachines ReadMachinesById(IFleetStore& store) {
    TMachines machines;
    for (TMachine& machine : store.ReadMachines()) {
        const TMachineId id = machine.id;
        machines.emplace(id, std::move(machine));
    }
    return machines;
}

std::vector<TChangeRow> CompareRows(const std::vector<TPresence>& stored, const TMachines& machines,
                                    const TChangeQuery& query, const TVersionIndex& versions) {
    std::vector<TChangeRow> rows;
    for (const auto& [key, sides] : GroupByInventory(stored, machines, query)) {
        auto before = MakeInventory(sides.before, key.place.scope, versions);
        auto after = MakeInventory(sides.after, key.place.scope, versions);
        CoverTypes(before, after);
        TChangeRow row;
        row.time = key.time;
        row.machine = machines.at(key.place.machine);
        for (const auto& difference : Compare(before, after, {}).differences) {
            AppendRows(difference, row, rows);
        }
    }
    return rows;
}

std::vector<TChangeRow> FindChanges(IFleetStore& store, const TMachines& machines,
                                    const TChangeQuery& query) {
    const std::vector<TPresence> stored = store.ReadChanges(query);
    return CompareRows(stored, machines, query, TVersionIndex(store, stored));
}

std::vector<TCell> MakeCells(const TChangeRow& row) {
    return {TMoment{row.time},
            NameMachine(row.machine),
            row.machine.key,
            row.change,
            row.type,
            row.resourceId,
            row.part,
            MakeTextCell(row.identity),
            MakeTextCell(row.property),
            row.before,
            row.after};
}

TAnswer MakeAnswer(std::string question, const std::vector<TChangeRow>& rows) {
    const bool isOfOne = question == "history";
    TAnswer answer{.question = std::move(question),
                   .columns = {{"time", "time"},
                               {"machine", isOfOne ? "" : "machine"},
                               {"key", ""},
                               {"change", "change"},
                               {"resourceType", ""},
                               {"resourceId", ""},
                               {"part", "part"},
                               {"identity", "identity"},
                               {"property", "property"},
                               {"before", "before"},
                               {"after", "after"}}};
    for (const TChangeRow& row : rows) {
        answer.rows.push_back(MakeCells(row));
    }
    answer.emptyText = "no changes";
    return answer;
}

}  // namespace

std::vector<TChangeRow> FindChanges(IFleetStore& store, const TChangeQuery& query) {
    return FindChanges(store, ReadMachinesById(store), query);
}

std::vector<TChangeRow> FindChangesOf(const TMachine& machine, const std::vector<TPresence>& rows,
                                      const TVersionIndex& versions) {
    return CompareRows(rows, {{machine.id, machine}}, {.machine = machine.id}, versions);
}

TAnswer ListHistory(IFleetStore& store, const TMachine& machine) {
    const TMachines machines{{machine.id, machine}};
    return MakeAnswer("history", FindChanges(store, machines, {.machine = machine.id}));
}

TAnswer ListChanges(IFleetStore& store, TSeconds since) {
    return MakeAnswer("changes", FindChanges(store, {.since = since - 1}));
}

}  // namespace NFLEET
