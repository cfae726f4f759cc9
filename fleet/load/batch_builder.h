// Inventories as the changes of one batch.
#pragma once

#include "fleet/load/machine_finder.h"
#include "fleet/load/read_inventory.h"
#include "fleet/model/presence_history.h"
#include "fleet/store/fleet_store.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace NFLEET {

/// Compares inventories with what the store has. Used within a batch of the store, which it reads.
class TBatchBuilder {
  public:
    explicit TBatchBuilder(IFleetStore& store);

    /// Adds all inventories of the batch. Call once.
    void Add(std::vector<TReadInventory> inventories);
    /// Returns the changes. Call once.
    TBatch Take();

    /// The number of inventories that the store had, or that another one of the batch replaces.
    std::uint64_t GetKnown() const { return known_; }
    /// The UUIDs of machines that the store did not have.
    const std::set<std::string>& GetNewUuids() const { return newUuids_; }
    /// The versions of the batch.
    const std::vector<std::shared_ptr<TCachedVersion>>& GetVersions() const { return versions_; }

  private:
    using TGroup = std::vector<TReadInventory>;
    using TGroups = std::map<TMachineScope, TGroup>;

    void FindMachinesOf(std::vector<TReadInventory>& inventories);
    void FindUnfinished(const std::map<TInventoryKey, TReadInventory>& kept);
    TGroups RemoveKnown(std::vector<TReadInventory> inventories);
    void ReadStatesOf(const TGroups& groups);
    bool IsUnchanged(const THead* head, const TReadInventory& read) const;
    void AddGroup(const TMachineScope& place, TGroup& group);
    void AddVersions(const TReadInventory& read);
    void UpdateMachines();

    IFleetStore& store_;
    TBatch batch_;
    std::optional<TMachineFinder> machines_;
    std::map<TMachineScope, THead> heads_;
    std::set<TMachineScope> unfinished_;  // places to which a batch may have been written in part
    std::map<TMachineScope, TScopeState> states_;
    std::vector<std::shared_ptr<TCachedVersion>> versions_;
    std::set<TDigest> versionDigests_;
    std::set<std::string> newUuids_;
    std::uint64_t known_ = 0;
};

}  // namespace NFLEET
