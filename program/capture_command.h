// The command `noxinfo capture`: a machine as an archive of the files that its collectors read.
#pragma once

#include "program/command_line.h"

#include <ostream>

namespace NVORHOST {

/// Runs the collectors, packs what they read, and prints a summary to `out`; when the archive goes there,
/// the sources that could not be read are printed to standard error.
/// Throws TRunFailure when the machine is not there or the archive cannot be written.
EExitStatus RunCapture(const TCaptureOptions& options, std::ostream& out);

}  // namespace NVORHOST
