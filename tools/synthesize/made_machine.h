// The files of a made-up machine, from which the collectors collect.
#pragma once

#include "tests/machine/system/machine_tree.h"
#include "tools/synthesize/fleet_history.h"

#include <cstdint>

namespace NSYNTHESIS {

/// Returns the machine as root sees it on a day, 1-based. What changes by itself, such as free memory,
/// differs from day to day.
NVORHOST::TMachine MakeMachine(const TMachineState& state, std::uint64_t day);

/// Returns the name of the machine in its network: "m0000012.example.net".
std::string MakeNodeName(const TMachineState& state);

}  // namespace NSYNTHESIS
