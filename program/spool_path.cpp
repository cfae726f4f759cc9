#include "program/spool_path.h"

#include "commandline/state_directory.h"
#include "vorhost/run/run_failure.h"

#include <unistd.h>

namespace NVORHOST {

std::string FindSpoolPath() {
    if (const auto state = FindDirectoryIn("STATE_DIRECTORY")) {
        return *state + "/spool";
    }
    if (::geteuid() == 0) {
        return "/var/lib/noxinfo/spool";
    }
    if (const auto state = FindUserStateDirectory()) {
        return *state + "/spool";
    }
    throw TRunFailure("HOME is not set, so the spool needs a path: --spool DIR");
}

}  // namespace NVORHOST
