// Questions about what changed, answered by the rules of comparisons.
#pragma once

#include "fleet/ask/answer.h"
#include "fleet/ask/version_index.h"
#include "fleet/store/fleet_store.h"
#include "inventory/model/resource.h"

#include <string>
#include <vector>

namespace NFLEET {

/// A property that differs, or a whole resource if `property` is empty.
struct TChangeRow {
    TSeconds time = 0;  ///< time of the first inventory with the change
    TMachine machine;
    std::string change;      ///< "replaced", "changed", ...
    std::string type;        ///< resource type
    std::string resourceId;  ///< identifier of the newer resource
    std::string part;        ///< what and where the resource is, for people
    std::string identity;    ///< serial number, address or the like of the newer resource
    std::string property{};
    TCell before{};
    TCell after{};
};

/// Returns the changes of one machine, or of all, after `query.since` up to `query.until`, by time, machine
/// and in the order of comparisons.
std::vector<TChangeRow> FindChanges(IFleetStore& store, const TChangeQuery& query);

/// Returns the changes among all rows of one machine, as FindChanges does. `versions` has their versions.
std::vector<TChangeRow> FindChangesOf(const TMachine& machine, const std::vector<TPresence>& rows,
                                      const TVersionIndex& versions);

/// Returns every change of a machine since its first inventory.
TAnswer ListHistory(IFleetStore& store, const TMachine& machine);

/// Returns the changes of all machines at or after `since`.
TAnswer ListChanges(IFleetStore& store, TSeconds since);

}  // namespace NFLEET
