#include "program/program_paths.h"

#include "os/module.h"
#include "vorhost/run/run_failure.h"

#include <stdexcept>

namespace NVORHOST {

std::string FindOwnPlugin() {
    try {
        return FindBesideProgram(NOXINFO_PLUGIN_FROM_BIN "/libnoxinfo.pi.so");
    } catch (const std::runtime_error& error) {
        throw TRunFailure(std::string("cannot find the plug-in of this program: ") + error.what() +
                          "; use --plugin");
    }
}

}  // namespace NVORHOST
