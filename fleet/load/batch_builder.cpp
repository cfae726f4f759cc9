#include "fleet/load/batch_builder.h"

#include "fleet/model/machine_traits.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace NFLEET {
namespace {

THead MakeHead(const TReadInventory& read) {
    return {read.inventory.place, read.inventory.time, read.inventory.digest, read.content,
            read.traits.facts};
}

bool IsNewer(const THead& head, const THead& other) {
    return std::tie(head.time, head.digest) > std::tie(other.time, other.digest);
}

}  // namespace

TBatchBuilder::TBatchBuilder(IFleetStore& store) : store_(store) {}

void TBatchBuilder::Add(std::vector<TReadInventory> inventories) {
    FindMachinesOf(inventories);
    TGroups groups = RemoveKnown(std::move(inventories));
    ReadStatesOf(groups);
    for (auto& [place, group] : groups) {
        AddGroup(place, group);
    }
    UpdateMachines();
}

// Gives each inventory its machine, and reads the machines that exist.
void TBatchBuilder::FindMachinesOf(std::vector<TReadInventory>& inventories) {
    std::vector<const TMachineTraits*> traits;
    std::ranges::transform(inventories, std::back_inserter(traits),
                           [](const TReadInventory& read) { return &read.traits; });
    machines_.emplace(store_, traits);
    for (TReadInventory& read : inventories) {
        read.inventory.place.machine = machines_->Find(read.traits);
    }
    const std::vector<TMachineId> ids = machines_->ListMachines();
    for (THead& head : store_.ReadHeads(ids)) {
        const TMachineScope place = head.place;
        heads_.emplace(place, std::move(head));
    }
}

void TBatchBuilder::FindUnfinished(const std::map<TInventoryKey, TReadInventory>& kept) {
    std::vector<TMachineScope> places;
    for (const auto& [key, read] : kept) {
        if (places.empty() || places.back() != key.place) {
            places.push_back(key.place);
        }
    }
    const auto unfinished = store_.FindUnfinished(places);
    unfinished_.insert(unfinished.begin(), unfinished.end());
}

// Of several inventories at one time the one with the greatest digest stays.
TBatchBuilder::TGroups TBatchBuilder::RemoveKnown(std::vector<TReadInventory> inventories) {
    std::map<TInventoryKey, TReadInventory> kept;
    for (TReadInventory& read : inventories) {
        const TInventoryKey key{read.inventory.place, read.inventory.time};
        const auto [entry, isNew] = kept.try_emplace(key);
        known_ += isNew ? 0 : 1;
        if (isNew || entry->second.inventory.digest < read.inventory.digest) {
            entry->second = std::move(read);
        }
    }
    FindUnfinished(kept);
    std::vector<TInventoryKey> keys;
    for (const auto& [key, read] : kept) {
        const auto head = heads_.find(key.place);
        if (unfinished_.contains(key.place) || (head != heads_.end() && key.time <= head->second.time)) {
            keys.push_back(key);
        }
    }
    for (const TInventory& stored : store_.FindInventories(keys)) {
        const auto entry = kept.find({stored.place, stored.time});
        if (entry != kept.end() && entry->second.inventory.digest <= stored.digest) {
            kept.erase(entry);
            ++known_;
        }
    }
    TGroups groups;
    for (auto& [key, read] : kept) {
        groups[key.place].push_back(std::move(read));
    }
    return groups;
}

// An inventory in which nothing changed since the newest one needs no state.
bool TBatchBuilder::IsUnchanged(const THead* head, const TReadInventory& read) const {
    return head != nullptr && !unfinished_.contains(head->place) && head->time < read.inventory.time &&
           head->content == read.content;
}

void TBatchBuilder::ReadStatesOf(const TGroups& groups) {
    std::vector<TMachineScope> places;
    for (const auto& [place, group] : groups) {
        const auto head = heads_.find(place);
        const bool isNew = head == heads_.end() && !unfinished_.contains(place);
        const auto isUnchanged = [&](const TReadInventory& read) {
            return head != heads_.end() && IsUnchanged(&head->second, read);
        };
        if (!isNew && !std::ranges::all_of(group, isUnchanged)) {
            places.push_back(place);
        }
    }
    for (TScopeState& state : store_.ReadStates(places)) {
        const TMachineScope place = state.place;
        states_.emplace(place, std::move(state));
    }
}

void TBatchBuilder::AddGroup(const TMachineScope& place, TGroup& group) {
    std::optional<TPresenceHistory> history;
    const auto getHistory = [&]() -> TPresenceHistory& {
        if (!history) {
            const auto state = states_.find(place);
            TScopeState start =
                state == states_.end() ? TScopeState{place, {}, {}} : std::move(state->second);
            // Unchanged inventories of this batch precede.
            for (const TInventory& inventory : batch_.inventories) {
                if (inventory.place == place) {
                    start.inventories.push_back(inventory);
                }
            }
            history.emplace(std::move(start));
        }
        return *history;
    };
    for (TReadInventory& read : group) {
        const auto found = heads_.find(place);
        THead head = MakeHead(read);
        AddVersions(read);
        if (history || !IsUnchanged(found == heads_.end() ? nullptr : &found->second, read)) {
            TInventory row = read.inventory;
            row.volatileValues.clear();
            getHistory().Insert(std::move(row), std::move(read.resources));
        }
        batch_.inventories.push_back(std::move(read.inventory));
        if (found == heads_.end() || IsNewer(head, found->second)) {
            heads_[place] = std::move(head);
        }
        TMachine& machine = machines_->Get(place.machine);
        machine.first = std::min(machine.first, batch_.inventories.back().time);
        machine.last = std::max(machine.last, batch_.inventories.back().time);
    }
    if (history) {
        history->AppendChanges(batch_.presences, batch_.removedPresences);
    }
    batch_.heads.push_back(heads_[place]);
}

void TBatchBuilder::AddVersions(const TReadInventory& read) {
    for (const auto& version : read.versions) {
        if (!version->isStored && versionDigests_.insert(version->digest).second) {
            batch_.versions.push_back(*version->body);
            versions_.push_back(version);
        }
    }
}

// Facts follow from the heads of all scopes.
void TBatchBuilder::UpdateMachines() {
    std::map<TMachineId, std::vector<THead>> headsOf;
    for (const auto& [place, head] : heads_) {
        headsOf[place.machine].push_back(head);
    }
    std::set<TMachineId> written;
    for (const THead& head : batch_.heads) {
        written.insert(head.place.machine);
    }
    std::vector<TMachineId> ids(written.begin(), written.end());
    std::set<TMachineId> existing;
    for (const TMachine& machine : store_.FindMachines(ids)) {
        existing.insert(machine.id);
    }
    for (const TMachineId& id : ids) {
        TMachine& machine = machines_->Get(id);
        TMachineFacts facts = MergeFacts(headsOf[id]);
        FillFacts(machine.facts, facts);  // keeps facts that the newest inventories lack
        machine.facts = std::move(facts);
        machine.usesSnapshot = UsesSnapshot(headsOf[id]);
        if (!existing.contains(id) && IsRealUuid(machine.facts.uuid)) {
            newUuids_.insert(machine.facts.uuid);
        }
        batch_.machines.push_back(machine);
    }
}

TBatch TBatchBuilder::Take() {
    batch_.aliases = machines_->ListNewAliases();
    return std::move(batch_);
}

}  // namespace NFLEET
