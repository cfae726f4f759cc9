// The question what a fleet consists of.
#pragma once

#include "fleet/ask/answer.h"
#include "fleet/store/fleet_store.h"

namespace NFLEET {

/// Returns counts of models, memory, memory modules, disks, processors, firmware and systems, as machines and
/// as parts. The groups are in this order, each with the commonest value first.
TAnswer SummarizeFleet(IFleetStore& store);

}  // namespace NFLEET
