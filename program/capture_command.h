// The command `noxinfo capture`, which packs the files that the collectors read into an archive.
#pragma once

#include "program/command_line.h"

#include <ostream>

namespace NVORHOST {

/// Runs the collectors, packs what they read, and prints a summary to `out`. If the archive goes to standard
/// output, only the outcome of the collection is printed, to standard error.
/// Errors: throws TRunFailure if the machine cannot be opened or the archive cannot be written.
EExitStatus RunCapture(const TCaptureOptions& options, std::ostream& out);

}  // namespace NVORHOST
