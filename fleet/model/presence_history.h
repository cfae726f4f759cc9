// The resources of one machine and scope over time. They are a step function: at the time of each inventory
// its resources, and between two inventories those of the earlier one. Decision: docs/decisions/0013.
#pragma once

#include "fleet/model/rows.h"

#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace NFLEET {

/// The rows of a machine and scope, and the rows that an inventory changes. The rows are the shortest that
/// describe the inventories, so they depend neither on the order in which inventories were inserted nor on
/// how often.
class TPresenceHistory {
  public:
    /// `state` may be one that a batch was written to in part: a row ends where the next one of its resource
    /// begins.
    explicit TPresenceHistory(TScopeState state);

    /// Inserts an inventory with its resources, in order of their keys; their places and times are ignored.
    /// Of two inventories at one time the one with the greater digest stays. Returns false if nothing
    /// changes.
    bool Insert(TInventory inventory, std::vector<TPresence> resources);
    /// Removes the inventory of a time; that before it then holds until the one after it. Returns false if
    /// there is none.
    bool Remove(TSeconds time);

    const TMachineScope& GetPlace() const { return place_; }
    /// Returns the inventories in ascending order of time.
    const std::vector<TInventory>& GetInventories() const { return inventories_; }
    /// Returns the rows in ascending order of resource and time.
    const std::vector<TPresence>& GetRows() const { return rows_; }
    /// Returns the resources at the time of an inventory.
    std::vector<TPresence> GetResources(TSeconds time) const;

    /// Appends the rows to write and the keys of those to remove since this object was made. Rows of a
    /// resource are in descending order of time, so that any number of them from the start gives a state in
    /// which the inventories that are stored have their resources.
    void AppendChanges(std::vector<TPresence>& written, std::vector<TPresenceKey>& removed) const;

  private:
    struct TSpan {
        TSeconds begin;
        TSeconds end;
    };

    TSpan FindSpan(TSeconds time) const;
    void Normalize();
    void SetSpan(const TSpan& span, std::vector<TPresence> resources);

    TMachineScope place_;
    std::vector<TInventory> inventories_;
    std::vector<TPresence> stored_;  // as read
    std::vector<TPresence> rows_;
};

}  // namespace NFLEET
