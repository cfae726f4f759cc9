// One request to a plug-in, from loading to unloading the library.
#pragma once

#include "vorhost/model/memory_namespace.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/run/private_directory.h"

#include <boost/shared_ptr.hpp>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

struct TPluginRequest {
    std::string pluginFile;
    boost::shared_ptr<TMemoryNamespace> collected;
    boost::shared_ptr<TMemoryClass> resultClass;
    const TPrivateDirectory& workplace;  ///< working directory during the request
    const TLogSinks& sinks;
    std::optional<std::string> noResultHint;  ///< advice for the message about a missing result
};

struct TPluginAnswer {
    std::vector<boost::shared_ptr<TMemoryInstance>> results;  ///< instances of this request; at least one
    std::chrono::nanoseconds loadTime{};                      ///< time to load and initialise the plug-in
    std::optional<std::string> credentialObstacle;            ///< why the host could not issue a credential
};

/// Loads the plug-in, makes the request, and unloads the plug-in.
/// Errors: throws TPluginError for an unusable plug-in; TRunFailure for a request that fails or has no
///         result, and for a log file that could not be written.
TPluginAnswer RunPluginRequest(const TPluginRequest& request);

}  // namespace NVORHOST
