// Parses the command line of noxinfo fleet.
#pragma once

#include "fleet/program/fleet_options.h"

#include <ostream>

namespace NFLEET {

/// Prints help or version to standard output, and usage errors to standard error; the result has no command
/// in both cases. Times are relative to `now`.
TFleetOptions ParseFleetCommandLine(int argc, const char* const* argv, TSeconds now);

/// Prints the completion script of a shell.
void WriteFleetCompletion(const std::string& shell, std::ostream& out);

}  // namespace NFLEET
