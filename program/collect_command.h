// The command `noxinfo collect`, which fills a namespace and runs the plug-in on it.
#pragma once

#include "program/command_line.h"

#include <iosfwd>

namespace NVORHOST {

/// Makes the request, publishes its files, and prints the summary to `out`.
/// Errors: throws TRunFailure or TPluginError; earlier files in the target directory are then unchanged.
EExitStatus RunCollect(const TCollectOptions& options, std::ostream& out);

}  // namespace NVORHOST
