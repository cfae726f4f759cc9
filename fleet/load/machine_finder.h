// Finds the machines of the inventories of a batch.
#pragma once

#include "fleet/model/machine_key.h"
#include "fleet/store/fleet_store.h"

#include <set>
#include <span>
#include <unordered_map>
#include <vector>

namespace NFLEET {

/// Inventories of one machine may contain different things about it: a document has no addresses, and an
/// ordinary user cannot read serial numbers. So a machine is found under each of its names, and each
/// inventory adds its names. A name of two machines finds neither. Used within a batch of the store.
class TMachineFinder {
  public:
    /// Reads what the store has under the names of `traits`.
    TMachineFinder(IFleetStore& store, std::span<const TMachineTraits* const> traits);

    /// Returns the machine of an inventory; a new one has no time yet.
    TMachineId Find(const TMachineTraits& traits);
    /// Returns the machine with the facts of its inventories so far.
    TMachine& Get(const TMachineId& id) { return machines_.at(id); }
    /// Returns the machines that the store has, and new ones.
    std::vector<TMachineId> ListMachines() const;
    /// Returns the aliases to write.
    std::vector<TAlias> ListNewAliases() const;

  private:
    TMachine* FindNamed(const TMachineTraits& traits, const std::vector<TMachineName>& names);
    TMachine* FindUnder(const TMachineName& name);
    bool IsMerged(const TMachineName& name) const;
    bool IsShared(const TDigest& name) const;
    TMachine& Add(const TMachineTraits& traits);
    void ImproveKey(const TMachineTraits& traits, TMachine& machine);
    void AddNames(const std::vector<TMachineName>& names, const TMachine& machine);
    void SetAlias(const TDigest& name, const TMachineId& machine);

    std::unordered_map<TMachineId, TMachine, TDigestHash> machines_;
    std::unordered_map<TDigest, TAlias, TDigestHash> aliases_;
    std::set<TDigest> newAliases_;
};

}  // namespace NFLEET
