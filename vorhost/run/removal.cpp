#include "vorhost/run/removal.h"

#include "os/file_descriptor.h"
#include "os/path_resolver.h"
#include "vorhost/run/directory_entries.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace NVORHOST {
namespace {

bool IsOnSameDevice(int one, int other) {
    struct stat first {};
    struct stat second {};
    return ::fstat(one, &first) == 0 && ::fstat(other, &second) == 0 && first.st_dev == second.st_dev;
}

bool RemoveEntry(int directory, const std::string& name) {
    if (::unlinkat(directory, name.c_str(), 0) == 0) {
        return true;
    }
    if (errno != EISDIR && errno != EPERM) {
        return false;
    }
    const TFileDescriptor entry = OpenSubdirectory(directory, name);
    return entry.IsOpen() && RemoveContents(entry.Get(), std::nullopt) &&
           ::unlinkat(directory, name.c_str(), AT_REMOVEDIR) == 0;
}

}  // namespace

TFileDescriptor OpenSubdirectory(int directory, const std::string& name) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    // Unlike a comparison of device numbers, this also detects a bind mount of the same file system.
    TFileDescriptor entry = OpenWithinFileSystem(directory, name, flags);
    if (!entry.IsOpen() && errno == ENOSYS) {
        entry = TFileDescriptor(::openat(directory, name.c_str(), flags));
    }
    if (entry.IsOpen() && !IsOnSameDevice(directory, entry.Get())) {
        errno = EXDEV;
        return {};
    }
    return entry;
}

bool RemoveContents(int directory, std::optional<std::string_view> kept) {
    const auto names = ListEntries(directory);
    if (!names) {
        return false;
    }
    bool isEmpty = true;
    for (const std::string& name : *names) {
        if (name != kept) {
            isEmpty = RemoveEntry(directory, name) && isEmpty;
        }
    }
    return isEmpty;
}

bool HoldsOtherFileSystem(int directory) {
    const auto names = ListEntries(directory);
    if (!names) {
        return true;
    }
    for (const std::string& name : *names) {
        const TFileDescriptor entry = OpenSubdirectory(directory, name);
        const bool isFile = !entry.IsOpen() && (errno == ENOTDIR || errno == ELOOP || errno == ENOENT);
        if (!isFile && (!entry.IsOpen() || HoldsOtherFileSystem(entry.Get()))) {
            return true;
        }
    }
    return false;
}

}  // namespace NVORHOST
