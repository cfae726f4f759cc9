// The command `noxinfo send`, which sends the files of earlier runs.
#pragma once

#include "program/command_line.h"

#include <iosfwd>

namespace NVORHOST {

/// Sends what waits in the spool and prints a summary to `out`.
/// Errors: throws TRunFailure if the spool or the credentials cannot be used, and if the runs were collected
///         for different URLs and none is given.
EExitStatus RunSend(const TSendOptions& options, std::ostream& out);

}  // namespace NVORHOST
