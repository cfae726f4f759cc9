#include "fleet/ask/machine_list.h"

#include "fleet/ask/version_index.h"
#include "fleet/model/assembly.h"
#include "text/lines.h"
#include "text/shown_text.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>

namespace NFLEET {
namespace {

using NINVENTORY::TCondition;

constexpr std::size_t maxNamed = 5;  // machines in a message

struct TFactRow {
    std::string_view name;
    std::string (*get)(const TMachine& machine);
};

constexpr TFactRow factRows[] = {
    {"name", [](const TMachine& machine) { return machine.facts.name; }},
    {"vendor", [](const TMachine& machine) { return machine.facts.vendor; }},
    {"model", [](const TMachine& machine) { return machine.facts.model; }},
    {"serial", [](const TMachine& machine) { return machine.facts.serial; }},
    {"uuid", [](const TMachine& machine) { return machine.facts.uuid; }},
    {"key", [](const TMachine& machine) { return machine.key; }},
};

const TFactRow& RequireFact(std::string_view property) {
    const auto* const row = std::ranges::find(factRows, property, &TFactRow::name);
    if (row == std::end(factRows)) {
        throw TQuestionError("'" + NVORHOST::ToShownText(std::string(property)) +
                             "' is not TYPE.PROPERTY, nor one of name, vendor, model, serial, uuid, key");
    }
    return *row;
}

std::string NameMachines(const std::vector<TMachine>& machines) {
    std::string text;
    for (std::size_t i = 0; i < std::min(machines.size(), maxNamed); ++i) {
        text += (i == 0 ? "" : ", ") + NVORHOST::ToShownText(machines[i].key);
    }
    return text + (machines.size() > maxNamed ? ", ..." : "");
}

using TMachineIds = std::set<TMachineId>;

bool MeetsResource(const NINVENTORY::TResource& resource, std::string_view property,
                   const TCondition& condition) {
    const NINVENTORY::TProperty* const found = resource.Find(property);
    return found != nullptr &&
           std::ranges::any_of(found->values, [&](const auto& value) { return Meets(value, condition); });
}

bool HasProperty(const TVersion& version, std::string_view property) {
    return std::ranges::any_of(
        version.properties, [&](const TVersionProperty& stored) { return stored.property.name == property; });
}

// True if the property is one of those whose values differ from presence to presence.
bool IsIdentifying(const TVersion& version, std::string_view property) {
    return std::ranges::any_of(version.properties, [&](const TVersionProperty& stored) {
        return stored.isIdentifying && stored.property.name == property;
    });
}

struct TFoundMachines {
    TMachineIds ids;
    bool hasProperty = false;  // of any resource of any machine
};

// Returns present rows of the machines, among them all that have one of the versions and meet a condition on
// an identifying property. A value is found without reading all rows, an expression is not.
std::vector<TPresence> ReadIdentified(IFleetStore& store, const std::set<TDigest>& versions,
                                      const TCondition& condition, const std::vector<TMachine>& machines) {
    if (versions.empty()) {
        return {};
    }
    if (condition.expression) {
        return store.FindPresences(std::vector(versions.begin(), versions.end()), std::nullopt);
    }
    std::map<TMachineId, bool> usesSnapshot;
    for (const TMachine& machine : machines) {
        usesSnapshot.emplace(machine.id, machine.usesSnapshot);
    }
    std::vector<TPresence> rows = store.FindIdentity(condition.value);
    std::erase_if(rows, [&](const TPresence& row) {
        const auto machine = usesSnapshot.find(row.place.machine);
        return row.until != open || !versions.contains(row.version) || machine == usesSnapshot.end() ||
               !IsCurrentScope(machine->second, row.place.scope);
    });
    return rows;
}

// Finds those of the machines of which a present resource meets a condition on TYPE.PROPERTY; perhaps others
// as well.
TFoundMachines FindByResource(IFleetStore& store, const TCondition& condition,
                              const std::vector<TMachine>& machines) {
    TFoundMachines found;
    const auto [type, property] = NVORHOST::SplitAt(condition.property, '.');
    const auto counts = store.CountVersions({.model = std::nullopt, .types = {std::string(type)}});
    const TVersionIndex versions(store, counts);
    std::set<TDigest> meeting;
    std::set<TDigest> identifying;
    for (const TVersionCount& count : counts) {
        const TVersion* const version = versions.Find(count.version);
        found.hasProperty = found.hasProperty || (version != nullptr && HasProperty(*version, property));
        if (version != nullptr && IsIdentifying(*version, property)) {
            identifying.insert(count.version);
        } else if (version != nullptr && MeetsResource(AssembleResource({}, *version), property, condition)) {
            meeting.insert(count.version);
        }
    }
    const auto ids = store.FindMachinesWith(std::vector(meeting.begin(), meeting.end()));
    found.ids.insert(ids.begin(), ids.end());
    for (const TPresence& row : ReadIdentified(store, identifying, condition, machines)) {
        if (MeetsResource(versions.Assemble(row), property, condition)) {
            found.ids.insert(row.place.machine);
        }
    }
    return found;
}

// Without this reason, a misspelt property looks like one whose value is wrong.
std::string DescribeUnknownProperty(const std::string& property) {
    return "no machines: no part has the property " + NVORHOST::ToShownText(property);
}

void KeepMachines(IFleetStore& store, const TCondition& condition, std::vector<TMachine>& machines,
                  std::string& emptyText) {
    if (condition.property.find('.') != std::string::npos) {
        const TFoundMachines found = FindByResource(store, condition, machines);
        if (!machines.empty() && !found.hasProperty) {
            emptyText = DescribeUnknownProperty(condition.property);
        }
        std::erase_if(machines, [&](const TMachine& machine) { return !found.ids.contains(machine.id); });
        return;
    }
    const TFactRow& row = RequireFact(condition.property);
    std::erase_if(machines, [&](const TMachine& machine) { return !Meets(row.get(machine), condition); });
}

TAnswer MakeTable(std::string question, const std::vector<TMachine>& machines) {
    TAnswer answer{.question = std::move(question),
                   .columns = {{"name", "name"},
                               {"model", "model"},
                               {"vendor", "vendor", /*isMinor=*/true},
                               {"serial", "serial number"},
                               {"firstSeen", "first seen", /*isMinor=*/true},
                               {"lastSeen", "last seen"},
                               {"uuid", "UUID", /*isMinor=*/true},
                               {"key", ""}}};
    for (const TMachine& machine : machines) {
        answer.rows.push_back({MakeTextCell(machine.facts.name), MakeTextCell(machine.facts.model),
                               MakeTextCell(machine.facts.vendor), MakeTextCell(machine.facts.serial),
                               TMoment{machine.first}, TMoment{machine.last},
                               MakeTextCell(machine.facts.uuid), machine.key});
    }
    return answer;
}

}  // namespace

const std::string& NameMachine(const TMachine& machine) {
    return !machine.facts.name.empty()     ? machine.facts.name
           : !machine.facts.serial.empty() ? machine.facts.serial
                                           : machine.key;
}

std::string GetFact(const TMachine& machine, std::string_view property) {
    return RequireFact(property).get(machine);
}

TMachine FindMachine(IFleetStore& store, std::string_view text) {
    std::vector<TMachine> found = store.FindNamedMachines(text);
    if (found.empty()) {
        throw TQuestionError("there is no machine '" + NVORHOST::ToShownText(std::string(text)) + "' in " +
                             store.GetName());
    }
    if (found.size() > 1) {
        std::ranges::sort(found, {}, &TMachine::key);
        throw TQuestionError("'" + NVORHOST::ToShownText(std::string(text)) + "' could be one of " +
                             NameMachines(found));
    }
    return std::move(found.front());
}

TAnswer ListMachines(IFleetStore& store, std::span<const TCondition> conditions) {
    std::vector<TMachine> machines = store.ReadMachines();
    std::string emptyText = "no machines";
    for (const TCondition& condition : conditions) {
        KeepMachines(store, condition, machines, emptyText);
    }
    std::ranges::sort(machines, {},
                      [](const TMachine& machine) { return std::pair(NameMachine(machine), machine.key); });
    TAnswer answer = MakeTable("machines", machines);
    answer.emptyText = std::move(emptyText);
    return answer;
}

TAnswer ListStaleMachines(IFleetStore& store, TSeconds since) {
    std::vector<TMachine> machines = store.ReadMachines();
    std::erase_if(machines, [since](const TMachine& machine) { return machine.last >= since; });
    std::ranges::sort(machines, {}, [](const TMachine& machine) {
        return std::tuple(machine.last, NameMachine(machine), machine.key);
    });
    TAnswer answer = MakeTable("stale", machines);
    answer.emptyText = "every machine has a newer inventory";
    return answer;
}

}  // namespace NFLEET
