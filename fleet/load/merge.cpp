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
    explicit TMerge(IFleetStore& store) : store_(store), aliases_(store.ReadAliases()) {}

    TBatch Run(std::string_view from, std::string_view to) {
        const TMachineId source = MakeDigest(from);
        const auto target = store_.FindMachines(std::vector{Resolve(to)});
        if (target.empty()) {
            throw TStoreError(store_.GetName() + ": there is no machine " + std::string(to));
        }
        const TMachine& kept = target.front();
        const auto known = std::ranges::find(aliases_, source, &TAlias::from);
        if (kept.id == source || (known != aliases_.end() && known->to == kept.id)) {
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
        const auto alias = std::ranges::find(aliases_, id, &TAlias::from);
        return alias == aliases_.end() ? id : alias->to;
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
        batch_.aliases.push_back({from.id, from.key, to.id});
        for (TAlias alias : aliases_) {
            if (alias.to == from.id) {
                alias.to = to.id;
                batch_.aliases.push_back(alias);
            }
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
        to.facts = MergeFacts(batch_.heads);
        to.usesSnapshot = UsesSnapshot(batch_.heads);
    }

    IFleetStore& store_;
    std::vector<TAlias> aliases_;
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
