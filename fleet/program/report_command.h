// noxinfo fleet report: a fleet as a static site.
#pragma once

#include "fleet/program/fleet_options.h"

#include <ostream>

namespace NFLEET {

/// Returns the exit status. Errors: throws TStoreError and TRunFailure; nothing is changed then.
int RunFleetReport(const TFleetOptions& options, std::ostream& out);

}  // namespace NFLEET
