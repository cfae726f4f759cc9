// One request to a plug-in, from loading it to unloading it.
#pragma once

#include "vorhost/model/memory_namespace.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/run/private_directory.h"

#include <boost/shared_ptr.hpp>

#include <chrono>
#include <string>
#include <vector>

namespace NVORHOST {

struct TPluginRequest {
    std::string pluginFile;
    boost::shared_ptr<TMemoryNamespace> collected;
    boost::shared_ptr<TMemoryClass> resultClass;
    const TPrivateDirectory& workplace;  ///< the working directory of the request
    const TLogSinks& sinks;
    std::string withoutResultHint;  ///< what to do when the plug-in makes no result; may be empty
};

struct TPluginAnswer {
    std::vector<boost::shared_ptr<TMemoryInstance>> results;  ///< at least one; made by this request
    std::chrono::nanoseconds loadTime{};                      ///< until the plug-in was ready for the request
    std::string credentialObstacle;  ///< why the host gave it no credential; empty when nothing failed
};

/// Loads the plug-in, lets it answer, and unloads it.
/// Errors: throws TPluginError for a plug-in that cannot be used, TRunFailure for a request that fails, ends
/// without a result, or could not be logged.
TPluginAnswer AskPlugin(const TPluginRequest& request);

}  // namespace NVORHOST
