// The inventory of a machine at a time, put together from stored rows.
#pragma once

#include "fleet/ask/answer.h"
#include "fleet/store/fleet_store.h"
#include "inventory/read/document_events.h"

#include <optional>
#include <string>
#include <vector>

namespace NFLEET {

/// Returns what the fleet knows about a machine: one row with its facts, its key, the rule that gave the key,
/// the keys of machines that were merged into it, its first and last inventory and their number.
TAnswer DescribeMachine(IFleetStore& store, const TMachine& machine);

/// Orders resources by type, as people look for them, and by key.
void SortForPeople(std::vector<NINVENTORY::TResource>& resources);

/// Returns the sentence that describes the rule by which a machine is known.
std::string DescribeRule(EMachineRule rule);

/// Passes the inventory on that holds at a time, or the present one: the snapshot if the newest moment of the
/// machine has one, else the documents. Values that change by themselves are those of that inventory.
/// Errors: throws TQuestionError if the machine has no inventory at that time; what `events` throws.
void PassMachine(IFleetStore& store, const TMachine& machine, std::optional<TSeconds> at,
                 NINVENTORY::IDocumentEvents& events);

}  // namespace NFLEET
