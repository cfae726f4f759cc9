#include "vorhost/run/directory_entries.h"

#include "os/file_descriptor.h"

#include <dirent.h>
#include <fcntl.h>

#include <cerrno>
#include <memory>

namespace NVORHOST {
namespace {

struct TCloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

}  // namespace

std::optional<std::vector<std::string>> ListEntries(int directory) {
    // Opens the directory again, because a duplicate would share its read position with `directory`.
    TFileDescriptor opened(::openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened.IsOpen()) {
        return std::nullopt;
    }
    const std::unique_ptr<DIR, TCloseDirectory> list(::fdopendir(opened.Get()));
    if (list == nullptr) {
        return std::nullopt;
    }
    (void)opened.Release();  // `list` owns it now
    std::vector<std::string> names;
    errno = 0;
    while (const dirent* const entry = ::readdir(list.get())) {  // NOLINT(concurrency-mt-unsafe): own list
        const std::string name = static_cast<const char*>(entry->d_name);
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    return errno == 0 ? std::optional(std::move(names)) : std::nullopt;
}

}  // namespace NVORHOST
