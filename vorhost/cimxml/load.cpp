// Finds the reader's module beside the program's libraries and hands the work to it.
#include "vorhost/cimxml/load.h"

#include "vorhost/cimxml/loader_entry.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

namespace NVORHOST {
namespace {

// By the program's own place and not by a search path: the build tree and an installed tree, wherever it was
// moved to, are laid out alike, and no other module of this name can be picked up.
std::string ModulePath() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        throw TCimXmlError("the reader of CIM-XML cannot be found: /proc/self/exe: " + error.message());
    }
    return (program.parent_path() / NOXINFO_LIB_FROM_BIN / "noxinfo" / NOXINFO_CIMXML_LOADER)
        .lexically_normal()
        .string();
}

[[noreturn]] void ThrowNotLoadable() {
    const char* const cause = dlerror();  // NOLINT(concurrency-mt-unsafe): per thread in glibc
    throw TCimXmlError(std::string("the reader of CIM-XML cannot be loaded: ") +
                       (cause != nullptr ? cause : "unknown cause"));
}

TLoaderEntry FindEntry() {
    // Never closed: exceptions that the module threw may still be held somewhere.
    void* const module = dlopen(ModulePath().c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const symbol = module != nullptr ? dlsym(module, loaderEntryName) : nullptr;
    if (symbol == nullptr) {
        ThrowNotLoadable();
    }
    return reinterpret_cast<TLoaderEntry>(symbol);  // NOLINT(*-reinterpret-cast): how dlsym hands it out
}

TLoaderEntry GetEntry() {
    static const TLoaderEntry entry = FindEntry();
    return entry;
}

}  // namespace

void LoadNamespace(const std::string& path, TMemoryNamespace& target) {
    GetEntry()(path, nullptr, target);
}

void LoadNamespace(const std::string& name, std::string_view text, TMemoryNamespace& target) {
    GetEntry()(name, &text, target);
}

}  // namespace NVORHOST
