// noxinfo fleet load: progress and result of a load for people.
#pragma once

#include "fleet/program/fleet_options.h"
#include "fleet/store/fleet_store.h"

#include <ostream>

namespace NFLEET {

/// Loads the paths of the options. Progress and what was set aside go to standard error. Returns the exit
/// status: `eExitGaps` if anything was set aside.
int RunLoad(const TFleetOptions& options, IFleetStore& store, std::ostream& out);

}  // namespace NFLEET
