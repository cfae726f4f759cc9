// Machines with the same value of a property, and what they consist of.
#pragma once

#include "fleet/store/fleet_store.h"

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace NFLEET {

/// The values of a property of all machines; a machine with several has all of them, and one without has
/// none.
class TMachineGroups {
  public:
    /// `property` is name, vendor, model, serial, uuid or key of the machine, or TYPE.PROPERTY of its present
    /// resources, whose different values are joined in order. Errors: throws TQuestionError for another
    /// property, and for one that no machine has.
    TMachineGroups(IFleetStore& store, std::span<const TMachine> machines, std::string_view property);

    /// Returns the group of a machine; empty for one without a value.
    const std::string& Get(const TMachineId& machine) const { return groups_.at(machine); }

    /// Counts versions in the present state of each group that has at least `minMachines`; ordered by model
    /// and version. A version that all machines of a model have is counted as if its groups had the same
    /// number of resources.
    std::map<std::string, std::vector<TVersionCount>> CountVersions(IFleetStore& store,
                                                                    std::span<const TMachine> machines,
                                                                    std::size_t minMachines) const;

  private:
    std::unordered_map<TMachineId, std::string, TDigestHash> groups_;
};

}  // namespace NFLEET
