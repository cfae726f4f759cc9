#include "os/module.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace NVORHOST {

void* LoadSymbol(const std::string& path, const char* symbol) {
    void* const module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const address = module != nullptr ? ::dlsym(module, symbol) : nullptr;
    if (address == nullptr) {
        const char* const cause = ::dlerror();  // NOLINT(concurrency-mt-unsafe): per thread in glibc
        throw std::runtime_error(cause != nullptr ? cause : "unknown cause");
    }
    return address;
}

std::string ReadProgramPath() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        throw std::runtime_error("/proc/self/exe: " + error.message());
    }
    return program.string();
}

std::string FindBesideProgram(std::string_view relative) {
    const std::filesystem::path program = ReadProgramPath();
    return (program.parent_path() / relative).lexically_normal().string();
}

std::string FindBesideObject(const void* address, std::string_view relative) {
    Dl_info object{};
    if (::dladdr(address, &object) == 0 || object.dli_fname == nullptr) {
        return std::string(relative);
    }
    const std::string_view path = object.dli_fname;
    return std::string(path.substr(0, path.rfind('/') + 1)).append(relative);
}

}  // namespace NVORHOST
