#include "fleet/load/store_writer.h"

#include "fleet/load/batch_builder.h"

#include <map>
#include <utility>

namespace NFLEET {
namespace {

constexpr TSeconds secondsOfDay = 86400;

}  // namespace

TStoreWriter::TWritten TStoreWriter::Write(std::vector<TReadInventory> inventories,
                                           std::vector<TSource> sources) {
    ReportFuture(inventories);
    const std::uint64_t count = inventories.size();
    store_.BeginBatch();
    TBatchBuilder builder(store_);
    try {
        builder.Add(std::move(inventories));
        TBatch batch = builder.Take();
        batch.sources = std::move(sources);
        store_.Write(batch);
    } catch (...) {
        store_.AbandonBatch();
        throw;
    }
    for (const auto& version : builder.GetVersions()) {
        version->isStored = true;
        version->body.reset();
    }
    newUuids_.insert(builder.GetNewUuids().begin(), builder.GetNewUuids().end());
    return {count - builder.GetKnown(), builder.GetKnown()};
}

void TStoreWriter::ReportFuture(const std::vector<TReadInventory>& inventories) {
    for (const TReadInventory& read : inventories) {
        if (read.inventory.time > now_ + secondsOfDay) {
            events_.Warn(read.inventory.source + ": the time of the inventory is in the future");
        }
    }
}

void TStoreWriter::ReportSharedUuids() {
    if (newUuids_.empty()) {
        return;
    }
    std::map<std::string, std::vector<TMachine>> machinesOf;
    for (TMachine& machine : store_.ReadMachines()) {
        if (newUuids_.contains(machine.facts.uuid)) {
            machinesOf[machine.facts.uuid].push_back(std::move(machine));
        }
    }
    for (const auto& [uuid, machines] : machinesOf) {
        if (machines.size() > 1) {
            std::string keys;
            for (const TMachine& machine : machines) {
                keys += (keys.empty() ? "" : ", ") + machine.key;
            }
            events_.Warn("machines with one UUID: " + keys);
        }
    }
    newUuids_.clear();
}

}  // namespace NFLEET
