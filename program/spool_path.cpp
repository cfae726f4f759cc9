#include "program/spool_path.h"

#include "text/lines.h"
#include "text/non_empty.h"
#include "vorhost/run/run_failure.h"

#include <unistd.h>

#include <cstdlib>
#include <optional>

namespace NVORHOST {
namespace {

// Relative paths in these variables are invalid, and the first of several is taken.
std::optional<std::string> FindDirectoryIn(const char* variable) {
    const char* const value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): nothing sets variables
    const auto path = NonEmpty(SplitAt(value == nullptr ? "" : value, ':').first);
    return path && path->starts_with('/') ? path : std::nullopt;
}

}  // namespace

std::string FindSpoolPath() {
    if (const auto state = FindDirectoryIn("STATE_DIRECTORY")) {
        return *state + "/spool";
    }
    if (::geteuid() == 0) {
        return "/var/lib/noxinfo/spool";
    }
    if (const auto state = FindDirectoryIn("XDG_STATE_HOME")) {
        return *state + "/noxinfo/spool";
    }
    if (const auto home = FindDirectoryIn("HOME")) {
        return *home + "/.local/state/noxinfo/spool";
    }
    throw TRunFailure("HOME is not set, so the spool needs a path: --spool DIR");
}

}  // namespace NVORHOST
