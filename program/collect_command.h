// `noxinfo collect`: fills a namespace, runs the plug-in on it and reports.
#pragma once

#include "program/command_line.h"

#include <iosfwd>

namespace NVORHOST {

/// Runs the request and prints the summary to `out`. Throws TRunFailure.
EExitStatus RunCollect(const TCollectOptions& options, std::ostream& out);

}  // namespace NVORHOST
