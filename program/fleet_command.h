// noxinfo fleet: the program noxinfo-fleet, which is installed apart because it needs other libraries.
#pragma once

#include "program/command_line.h"

namespace NVORHOST {

/// Replaces this process by noxinfo-fleet: the one beside this program, else the one in PATH.
/// Errors: throws TRunFailure if there is none or it cannot be executed.
[[noreturn]] void ExecuteFleet(const TFleetWords& words);

}  // namespace NVORHOST
