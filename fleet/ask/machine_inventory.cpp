#include "fleet/ask/machine_inventory.h"

#include "fleet/ask/machine_list.h"
#include "fleet/ask/moment.h"
#include "fleet/ask/version_index.h"
#include "fleet/model/assembly.h"
#include "fleet/model/machine_key.h"
#include "inventory/model/resource_type.h"
#include "text/shown_text.h"

#include <algorithm>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace NFLEET {
namespace {

using NINVENTORY::EDocument;
using TVolatileValues = std::unordered_map<TDigest, std::vector<TVolatileValue>, TDigestHash>;

EDocument GetDocument(EScope scope) {
    return scope == EScope::hardware            ? EDocument::hardware
           : scope == EScope::systemInformation ? EDocument::systemInformation
                                                : EDocument::collection;
}

void PassScope(IFleetStore& store, const TInventory& inventory, TSeconds at,
               NINVENTORY::IDocumentEvents& events) {
    const std::vector<TPresence> rows = store.ReadPresences(inventory.place, at);
    const TVersionIndex versions(store, rows);
    TVolatileValues values;
    for (const TVolatileValue& value : inventory.volatileValues) {
        values[value.resource].push_back(value);
    }
    std::vector<NINVENTORY::TResource> resources;
    for (const TPresence& row : rows) {
        resources.push_back(versions.Assemble(row));
        if (const auto found = values.find(row.resource); found != values.end()) {
            AddVolatileValues(found->second, row.resource, resources.back());
        }
    }
    SortForPeople(resources);
    events.BeginDocument({.kind = GetDocument(inventory.place.scope),
                          .namespaceUri = {},
                          .timestamp = FormatMoment(inventory.time)});
    const std::string* list = nullptr;
    for (NINVENTORY::TResource& resource : resources) {
        if (list == nullptr || *list != resource.list) {
            events.BeginList(resource.list, 0);
        }
        list = &resource.list;
        events.AddResource(NINVENTORY::TResource(resource));
    }
}

// The newest inventory of each scope at a time; nothing of scopes without one.
std::vector<TInventory> FindInventories(IFleetStore& store, const TMachine& machine, TSeconds at) {
    return store.ReadInventories({.machine = machine.id,
                                  .scope = {},
                                  .since = std::numeric_limits<TSeconds>::min(),
                                  .until = at == open ? open : at + 1,
                                  .newestOnly = true,
                                  .withVolatileValues = true});
}

// True if the newest of the inventories is a snapshot.
bool IsSnapshotNewest(std::span<const TInventory> inventories) {
    const auto newest = std::ranges::max_element(inventories, {}, [](const TInventory& inventory) {
        return std::pair(inventory.time, inventory.place.scope == EScope::snapshot);
    });
    return newest != inventories.end() && newest->place.scope == EScope::snapshot;
}

std::string ListMerged(IFleetStore& store, const TMachine& machine) {
    std::string keys;
    for (const TAlias& alias : store.ReadMergedAliases(machine.id)) {
        keys += (keys.empty() ? "" : ", ") + alias.fromKey;
    }
    return keys;
}

}  // namespace

// Rows are in the order of digests. People get the order of types in which they look for them, and of keys.
void SortForPeople(std::vector<NINVENTORY::TResource>& resources) {
    const auto types = NINVENTORY::GetResourceTypes();
    const auto getOrder = [types](const NINVENTORY::TResource& resource) {
        const auto type = std::ranges::find(types, resource.type, &NINVENTORY::TResourceType::type);
        const std::string_view keyProperty = type == types.end() ? "Name" : type->keyProperty;
        return std::tuple(!resource.list.empty(), std::string_view(resource.list), type - types.begin(),
                          resource.GetText(keyProperty), std::string_view(resource.id));
    };
    std::ranges::stable_sort(resources, {}, getOrder);
}

std::string DescribeRule(EMachineRule rule) {
    const auto rules = GetMachineRules();
    const auto row = std::ranges::find(rules, rule, &TMachineRule::rule);
    return row == rules.end() ? std::string() : std::string(row->description);
}

TAnswer DescribeMachine(IFleetStore& store, const TMachine& machine) {
    const auto inventories = store.ReadInventories({.machine = machine.id});
    const TMachineFacts& facts = machine.facts;
    return {.question = "show",
            .columns = {{"name", "machine"},
                        {"vendor", "vendor"},
                        {"model", "model"},
                        {"serial", "serial number"},
                        {"uuid", "UUID"},
                        {"key", "key"},
                        {"rule", "known by"},
                        {"mergedFrom", "merged from"},
                        {"firstSeen", "first seen"},
                        {"lastSeen", "last seen"},
                        {"inventories", "inventories"}},
            .rows = {{MakeTextCell(facts.name), MakeTextCell(facts.vendor), MakeTextCell(facts.model),
                      MakeTextCell(facts.serial), MakeTextCell(facts.uuid), machine.key,
                      TShownValue{DescribeRule(machine.rule), std::string(GetWord(machine.rule))},
                      MakeTextCell(ListMerged(store, machine)), TMoment{machine.first}, TMoment{machine.last},
                      static_cast<std::int64_t>(inventories.size())}}};
}

void PassMachine(IFleetStore& store, const TMachine& machine, std::optional<TSeconds> at,
                 NINVENTORY::IDocumentEvents& events) {
    const auto inventories = FindInventories(store, machine, at.value_or(open));
    if (inventories.empty()) {
        throw TQuestionError(NVORHOST::ToShownText(NameMachine(machine)) + " has no inventory at " +
                             FormatMoment(at.value_or(0)) + "; its first one is of " +
                             FormatMoment(machine.first));
    }
    const bool usesSnapshot = IsSnapshotNewest(inventories);
    for (const TInventory& inventory : inventories) {
        if (IsCurrentScope(usesSnapshot, inventory.place.scope)) {
            PassScope(store, inventory, at.value_or(open - 1), events);
        }
    }
}

}  // namespace NFLEET
