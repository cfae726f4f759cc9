#include "commandline/state_directory.h"

#include "text/lines.h"
#include "text/non_empty.h"

#include <cstdlib>

namespace NVORHOST {

// Relative paths in these variables are invalid, and the first of several is taken.
std::optional<std::string> FindDirectoryIn(const char* variable) {
    const char* const value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): nothing sets variables
    const auto path = NonEmpty(SplitAt(value == nullptr ? "" : value, ':').first);
    return path && path->starts_with('/') ? path : std::nullopt;
}

std::optional<std::string> FindUserStateDirectory() {
    if (const auto state = FindDirectoryIn("XDG_STATE_HOME")) {
        return *state + "/noxinfo";
    }
    if (const auto home = FindDirectoryIn("HOME")) {
        return *home + "/.local/state/noxinfo";
    }
    return std::nullopt;
}

}  // namespace NVORHOST
