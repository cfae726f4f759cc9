// Where programs keep what they need from one run to the next.
#pragma once

#include <optional>
#include <string>

namespace NVORHOST {

/// Returns the absolute path, or the first of several separated by colons, in an environment variable;
/// nullopt if it is not set or not absolute.
std::optional<std::string> FindDirectoryIn(const char* variable);

/// Returns the directory of this project in the user's state directory: "noxinfo" below $XDG_STATE_HOME or
/// ~/.local/state. nullopt if the user has no home directory.
std::optional<std::string> FindUserStateDirectory();

}  // namespace NVORHOST
