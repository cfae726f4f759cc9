// The removal of old inventories.
#include "fleet/load/load.h"
#include "fleet/model/presence_history.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>

namespace NFLEET {
namespace {

constexpr TSeconds secondsOfDay = 86400;

// A condition that keeps the newest inventory of each of a number of periods before the newest one.
struct TPeriod {
    unsigned TKeepOptions::*count;
    TSeconds length;
};

constexpr TPeriod periods[] = {
    {&TKeepOptions::days, secondsOfDay},
    {&TKeepOptions::weeks, 7 * secondsOfDay},
    {&TKeepOptions::months, 30 * secondsOfDay},
};

// Periods count from 1970-01-01, so that the same inventories are kept whenever the store is pruned.
void KeepPeriods(const TPeriod& period, unsigned count, const std::vector<TInventory>& inventories,
                 std::set<TSeconds>& kept) {
    const TSeconds newest = inventories.back().time / period.length;
    std::set<TSeconds> seen;
    for (auto inventory = inventories.rbegin(); inventory != inventories.rend(); ++inventory) {
        const TSeconds number = inventory->time / period.length;
        if (newest - number < TSeconds{count} && seen.insert(number).second) {
            kept.insert(inventory->time);
        }
    }
}

std::set<TSeconds> SelectKept(const TKeepOptions& keep, const std::vector<TInventory>& inventories) {
    std::set<TSeconds> kept = {inventories.back().time};
    for (std::size_t i = 0; i < inventories.size(); ++i) {
        const TSeconds time = inventories[i].time;
        if ((keep.since > 0 && time >= keep.since) || inventories.size() - i <= keep.newest) {
            kept.insert(time);
        }
    }
    for (const TPeriod& period : periods) {
        KeepPeriods(period, keep.*period.count, inventories, kept);
    }
    return kept;
}

class TPruning {
  public:
    TPruning(const TKeepOptions& keep, IFleetStore& store) : keep_(keep), store_(store) {}

    // Prunes one machine as a batch.
    std::uint64_t Run(const TMachineId& id) {
        TBatch batch;
        store_.BeginBatch();
        try {
            TSeconds first = open;
            for (const EScope scope : scopes) {
                first = std::min(first, PruneScope({id, scope}, batch));
            }
            for (TMachine& machine : store_.FindMachines(std::vector{id})) {
                machine.first = std::min(first, machine.last);
                batch.machines.push_back(std::move(machine));
            }
            const std::uint64_t removed = batch.removedInventories.size();
            store_.Write(removed == 0 ? TBatch() : batch);
            return removed;
        } catch (...) {
            store_.AbandonBatch();
            throw;
        }
    }

  private:
    // Returns the time of the oldest inventory that stays; `open` without one.
    TSeconds PruneScope(const TMachineScope& place, TBatch& batch) {
        auto states = store_.ReadStates(std::vector{place});
        TPresenceHistory history(std::move(states.front()));
        const std::vector<TInventory> inventories = history.GetInventories();
        if (inventories.empty()) {
            return open;
        }
        const std::set<TSeconds> kept = SelectKept(keep_, inventories);
        for (const TInventory& inventory : inventories) {
            if (!kept.contains(inventory.time)) {
                history.Remove(inventory.time);
                batch.removedInventories.push_back({place, inventory.time});
            }
        }
        history.AppendChanges(batch.presences, batch.removedPresences);
        return *kept.begin();
    }

    const TKeepOptions& keep_;
    IFleetStore& store_;
};

}  // namespace

std::uint64_t PruneInventories(const TKeepOptions& keep, IFleetStore& store) {
    std::uint64_t removed = 0;
    TPruning pruning(keep, store);
    for (const TMachine& machine : store.ReadMachines()) {
        removed += pruning.Run(machine.id);
    }
    if (removed > 0) {
        (void)store.RemoveUnusedVersions();
    }
    return removed;
}

}  // namespace NFLEET
