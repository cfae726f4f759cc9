// `noxinfo report`: an inventory as a page for browsers.
#pragma once

#include "program/command_line.h"
#include "vorhost/run/exit_status.h"

#include <ostream>

namespace NVORHOST {

/// Writes the page of the source, or of this machine, to --output and returns what was missing.
/// Errors: throws TRunFailure; the file is not touched if the source cannot be read.
EExitStatus RunReport(const TReportOptions& options, std::ostream& out);

}  // namespace NVORHOST
