// The merging of two machines into one.
#include "fleet/load/load.h"
#include "fleet/model/machine_traits.h"
#include "fleet/model/presence_history.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

namespace NFLEET {
namespace {

class TMerge {
  public:
    explicit TMerge(IFleetStore& store) : store_(store) {}

    TBatch Run(std::string_view from, std::string_view to) {
        const TMachineId source = Resolve(from);
        const auto target = store_.FindMachines(std::vector{Resolve(to)});
        if (target.empty()) {
            throw TStoreError(store_.GetName() + ": there is no machine " + std::string(to));
        }
        const TMachine& kept = target.front();
        if (kept.id == source) {
            return {};
        }
        const auto old = store_.FindMachines(std::vector{source});
        if (old.empty()) {
            throw TStoreError(store_.GetName() + ": there is no machine " + std::string(from));
        }
        Move(old.front(), kept);
        return std::move(batch_);
    }

  private:
    TMachineId Resolve(std::string_view key) const {
        const TMachineId id = MakeDigest(key);
        const auto aliases = store_.FindAliases(std::vector{id});
        return aliases.empty() ? id : aliases.front().to;
    }

    void Move(const TMachine& from, TMachine to) {
        for (const EScope scope : scopes) {
            MoveScope({from.id, scope}, {to.id, scope});
        }
        MoveHeads(from, to);
        to.first = std::min(to.first, from.first);
        to.last = std::max(to.last, from.last);
        batch_.machines.push_back(to);
        batch_.removedMachines.push_back(from.id);
        MoveNames(from, to);
    }

    void MoveNames(const TMachine& from, const TMachine& to) {
        std::map<TDigest, TAlias> aliases;
        for (TAlias alias : store_.ReadAliasesOf(from.id)) {
            alias.to = to.id;
            aliases[alias.from] = std::move(alias);
        }
        for (const TDigest& name : {from.id, MakeDigest(from.key)}) {
            aliases[name] = {name, from.key, to.id};
        }
        for (auto& [name, alias] : aliases) {
            batch_.aliases.push_back(std::move(alias));
        }
    }

    void MoveScope(const TMachineScope& from, const TMachineScope& to) {
        auto states = store_.ReadStates(std::vector{from, to});
        const TPresenceHistory source(std::move(states[0]));
        TPresenceHistory target(std::move(states[1]));
        std::set<TSeconds> moved;
        for (const TInventory& inventory : source.GetInventories()) {
            if (target.Insert(inventory, source.GetResources(inventory.time))) {
                moved.insert(inventory.time);
            }
        }
        target.AppendChanges(batch_.presences, batch_.removedPresences);
        TInventoryQuery query;
        query.machine = from.machine;
        query.scope = from.scope;
        query.withVolatileValues = true;
        for (TInventory& inventory : store_.ReadInventories(query)) {
            if (moved.contains(inventory.time)) {
                inventory.place = to;
                batch_.inventories.push_back(std::move(inventory));
            }
        }
    }

    void MoveHeads(const TMachine& from, TMachine& to) {
        std::map<EScope, THead> newest;
        for (THead& head : store_.ReadHeads(std::vector{from.id, to.id})) {
            head.place.machine = to.id;
            const auto [entry, isNew] = newest.try_emplace(head.place.scope, head);
            if (!isNew &&
                std::tie(head.time, head.digest) > std::tie(entry->second.time, entry->second.digest)) {
                entry->second = head;
            }
        }
        for (const auto& [scope, head] : newest) {
            batch_.heads.push_back(head);
        }
        TMachineFacts facts = MergeFacts(batch_.heads);
        FillFacts(to.facts, facts);
        FillFacts(from.facts, facts);
        to.facts = std::move(facts);
        to.usesSnapshot = UsesSnapshot(batch_.heads);
    }

    IFleetStore& store_;
    TBatch batch_;
};

}  // namespace

void MergeMachines(std::string_view from, std::string_view to, IFleetStore& store) {
    store.BeginBatch();
    try {
        store.Write(TMerge(store).Run(from, to));
    } catch (...) {
        store.AbandonBatch();
        throw;
    }
}

}  // namespace NFLEET
