// Where a run's namespace comes from: this machine, a captured tree, or a file.
#pragma once

#include "vorhost/cli/command_line.h"
#include "vorhost/model/memory_namespace.h"
#include "vorhost/system/system_calls.h"
#include "vorhost/system/system_files.h"

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

/// A filled namespace and what became of filling it.
struct TNamespaceSource {
    boost::shared_ptr<TMemoryNamespace> collected;
    std::string origin;                      ///< for people: "this machine", "tree /x", "file y.xml"
    std::size_t failedCollectors = 0;        ///< each is in the log
    std::vector<std::string> deniedSources;  ///< files that this user may not read, each once, sorted
    std::vector<std::string> failedSources;  ///< those that cannot be read for another reason, likewise
    std::vector<std::string> warnings;       ///< one line for each malformed source
    std::size_t replacedBytes = 0;           ///< of the machine's texts, because they are no characters
};

/// Fills a namespace as the options say. Throws TRunFailure when a file cannot be read or a tree is not
/// there.
TNamespaceSource ObtainNamespace(const TSourceOptions& options);

/// Runs the chosen collectors through these doors and logs what goes wrong; `origin` stays empty.
TNamespaceSource CollectNamespace(const ISystemFiles& files, const ISystemCalls& calls,
                                  const std::optional<NKELVOR20::TCIMDateTime>& localTime,
                                  const TCollectorChoice& choice);

}  // namespace NVORHOST
