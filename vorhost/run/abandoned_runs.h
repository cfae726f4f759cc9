// Completes and removes what killed runs have left in a target directory.
#pragma once

#include "vorhost/run/target_directory.h"

#include <sys/types.h>

#include <string>
#include <vector>

namespace NVORHOST {

/// Lists the directories in the target whose name is that of an ended run of this host.
std::vector<std::string> ListAbandoned(const TTargetDirectory& target);

/// Removes those of the named directories that belong to `owner`, have a journal with their name, are not
/// locked, and contain no mount. If the run was killed after it had moved some of its files, and these have
/// not been replaced since, the remaining files are moved first. Failures are ignored: the next run tries
/// again. Returns the names of the moved files.
std::vector<std::string> RemoveAbandoned(const TTargetDirectory& target,
                                         const std::vector<std::string>& names, uid_t owner,
                                         const TTargetLock& lock);

/// Removes a private directory, its journal last. Returns false if something remains.
bool RemovePrivateDirectory(const TTargetDirectory& target, const std::string& name, int directory);

/// True if the entry is the file that `descriptor` refers to, and not a symbolic link to it.
bool IsEntry(int directory, const std::string& name, int descriptor);

}  // namespace NVORHOST
