// `noxinfo show`: an inventory for people and for other programs.
#pragma once

#include "program/command_line.h"
#include "vorhost/run/exit_status.h"

#include <ostream>
#include <string>
#include <vector>

namespace NVORHOST {

/// Writes the sources, or this machine, in the format of the options. Nothing is written below
/// --output if a source cannot be read.
/// Errors: throws TRunFailure.
EExitStatus RunShow(const TShowOptions& options, std::ostream& out);

/// Returns the names of the formats, the default first.
std::vector<std::string> ListShowFormats();

}  // namespace NVORHOST
