// A request to a plug-in that may take its process down with it.
#pragma once

#include "vorhost/run/plugin_request.h"

namespace NVORHOST {

/// As `AskPlugin`, with the same answer and the same failures, in a process of its own: what the plug-in does
/// to that process, this one outlives. What it prints and logs comes out as it would otherwise.
/// Errors: also TRunFailure when the process ends without an answer, naming the plug-in and what ended it,
/// and when there is no process to be had.
TPluginAnswer AskPluginInIsolation(const TPluginRequest& request);

}  // namespace NVORHOST
