// Finds the archive module beside the program's libraries and hands the work to it.
#include "machine/capture/archive.h"

#include "machine/capture/archive_module_entry.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace NVORHOST {
namespace {

// By the program's own place and not by a search path: the build tree and an installed tree, wherever it was
// moved to, are laid out alike, and no other module of this name can be picked up.
std::string ModulePath() {
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    return (program.parent_path() / NOXINFO_LIB_FROM_BIN / "noxinfo" / NOXINFO_ARCHIVE_MODULE)
        .lexically_normal()
        .string();
}

TArchiveEntry FindEntry() {
    // Never closed: exceptions that the module threw may still be held somewhere.
    void* const module = dlopen(ModulePath().c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const symbol = module != nullptr ? dlsym(module, archiveEntryName) : nullptr;
    if (symbol == nullptr) {
        const char* const cause = dlerror();  // NOLINT(concurrency-mt-unsafe): per thread in glibc
        throw std::runtime_error(std::string("the writer of archives cannot be loaded: ") +
                                 (cause != nullptr ? cause : "unknown cause"));
    }
    return reinterpret_cast<TArchiveEntry>(symbol);  // NOLINT(*-reinterpret-cast): how dlsym hands it out
}

}  // namespace

void WriteArchive(const TCapturedTree& tree, std::ostream& out) {
    FindEntry()(tree, out);
}

}  // namespace NVORHOST
