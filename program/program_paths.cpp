#include "program/program_paths.h"

#include "vorhost/run/run_failure.h"

#include <filesystem>
#include <system_error>

namespace NVORHOST {

std::string FindOwnPlugin() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        throw TRunFailure("cannot find the plug-in of this program: /proc/self/exe: " + error.message() +
                          "; use --plugin");
    }
    const auto plugins = program.parent_path() / NOXINFO_PLUGIN_FROM_BIN;
    return (plugins / "libnoxinfo.pi.so").lexically_normal().string();
}

}  // namespace NVORHOST
