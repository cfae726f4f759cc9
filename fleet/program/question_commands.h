// The commands of noxinfo fleet that ask or change a store.
#pragma once

#include "fleet/program/fleet_options.h"

#include <ostream>

namespace NFLEET {

/// Runs the command of the options and returns its exit status.
/// Errors: throws TQuestionError, TStoreError, NVORHOST::TRunFailure and other std::exception.
int RunFleetCommand(const TFleetOptions& options, std::ostream& out);

}  // namespace NFLEET
