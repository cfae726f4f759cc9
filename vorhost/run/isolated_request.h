// A request to a plug-in in a separate process, which the plug-in may crash or end.
#pragma once

#include "vorhost/run/plugin_request.h"

namespace NVORHOST {

/// Makes a request like RunPluginRequest, with the same answer, failures, output and log, but in a forked
/// process.
/// Errors: throws TRunFailure also if the process cannot be created, or ends without an answer; the message
///         names the plug-in and how the process ended.
TPluginAnswer RunIsolatedRequest(const TPluginRequest& request);

}  // namespace NVORHOST
