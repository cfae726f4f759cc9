// What runs that were killed have left in a target directory: completed where that is possible, and removed.
#pragma once

#include "vorhost/run/target_directory.h"

#include <sys/types.h>

#include <string>
#include <vector>

namespace NVORHOST {

/// Names of directories in the target that look abandoned by runs of this host.
std::vector<std::string> FindAbandoned(const TTargetDirectory& target);

/// Removes each of these directories that belongs to `owner`, has a journal that proves its origin, is not
/// locked, and holds no other file system. If its run was killed between moving its first file and its last,
/// and nobody has replaced the files moved, the rest of them are moved first. Whatever fails is left to the
/// next run. Returns the names of the files moved.
std::vector<std::string> RemoveAbandoned(const TTargetDirectory& target,
                                         const std::vector<std::string>& names, uid_t owner,
                                         const TTargetLock& lock);

/// Removes a private directory, its journal last. False when something is left.
bool RemovePrivateDirectory(const TTargetDirectory& target, const std::string& name, int directory);

/// True when the entry is what the descriptor refers to, and not a link to it.
bool IsEntry(int directory, const std::string& name, int descriptor);

}  // namespace NVORHOST
