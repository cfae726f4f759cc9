// Shared objects that are loaded when the first piece of work needs them, so that other runs do not pay for
// the libraries that come with them.
//
// Failure language: std::runtime_error with the path or the dynamic linker's message.
#pragma once

#include <string>
#include <string_view>

namespace NVORHOST {

/// Loads the shared object `path` and returns the address of `symbol` in it. The object is never unloaded:
/// objects of its types, exceptions among them, may outlive the caller.
/// Errors: throws std::runtime_error with the dynamic linker's message if the object or the symbol is
///         missing.
void* LoadSymbol(const std::string& path, const char* symbol);

/// LoadSymbol for a function of the type TFunction, a pointer to function.
template <typename TFunction>
TFunction LoadFunction(const std::string& path, const char* symbol) {
    return reinterpret_cast<TFunction>(LoadSymbol(path, symbol));  // NOLINT(*-reinterpret-cast): dlsym's type
}

/// Returns the path of the running program, links resolved.
/// Errors: throws std::runtime_error, "/proc/self/exe: ..." with the cause.
std::string ReadProgramPath();

/// Returns the normalised path of `relative`, which is relative to the folder of the running program. Build
/// tree and installed tree have the same layout, so this finds the parts of both, wherever the tree has been
/// moved, and no file of that name from a search path. The result need not exist.
/// Errors: throws std::runtime_error as ReadProgramPath does.
std::string FindBesideProgram(std::string_view relative);

/// Returns the path of `relative`, which is relative to the folder of the shared object or program that
/// contains `address`; `relative` itself if that object is unknown. The result need not exist.
std::string FindBesideObject(const void* address, std::string_view relative);

}  // namespace NVORHOST
