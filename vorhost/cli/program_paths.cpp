#include "vorhost/cli/program_paths.h"

#include <filesystem>

namespace NVORHOST {

std::string FindOwnPlugin() {
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    const auto plugins = program.parent_path() / NOXINFO_PLUGIN_FROM_BIN;
    return (plugins / "libnoxinfo.pi.so").lexically_normal().string();
}

}  // namespace NVORHOST
