// Questions about which machines there are.
#pragma once

#include "fleet/ask/answer.h"
#include "fleet/store/fleet_store.h"
#include "inventory/read/resource_filter.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

/// Finds a machine by its key, name, serial number or UUID, or by the first digits of its identifier, at
/// least six. Errors: throws TQuestionError if there is none or several.
TMachine FindMachine(IFleetStore& store, std::string_view text);

/// Returns the name for people: the name of the machine, else its serial number, else its key. It is valid as
/// long as the machine.
const std::string& NameMachine(const TMachine& machine);

/// Returns the name, vendor, model, serial, uuid or key of a machine. Errors: throws TQuestionError for
/// another name of a property.
std::string GetFact(const TMachine& machine, std::string_view property);

/// Returns the machines for which all conditions hold, by name. A condition is on name, vendor, model,
/// serial, uuid or key of the machine, or on TYPE.PROPERTY of its present resources.
TAnswer ListMachines(IFleetStore& store, std::span<const NINVENTORY::TCondition> conditions);

/// Returns the machines without an inventory at or after `since`, the oldest first.
TAnswer ListStaleMachines(IFleetStore& store, TSeconds since);

}  // namespace NFLEET
