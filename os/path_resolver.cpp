#include "os/path_resolver.h"

#include "os/path_walk.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

TFileDescriptor Fail(int error) {
    errno = error;
    return {};
}

bool IsLink(const TFileDescriptor& entry) {
    struct stat status {};
    return ::fstat(entry.Get(), &status) == 0 && S_ISLNK(status.st_mode);
}

bool ReadTarget(const TFileDescriptor& link, std::string& target) {
    std::array<char, PATH_MAX> buffer{};
    const ssize_t length = ::readlinkat(link.Get(), "", buffer.data(), buffer.size());
    if (length < 0) {
        return false;
    }
    target.assign(buffer.data(), static_cast<std::size_t>(length));
    return true;
}

// The folders entered so far on a walk from the root, so that ".." needs no access to the file system.
class TWalk {
  public:
    explicit TWalk(int root) : root_(root) {}

    int Here() const { return folders_.empty() ? root_ : folders_.back().Get(); }
    void Enter(TFileDescriptor folder) { folders_.push_back(std::move(folder)); }
    void GoToRoot() { folders_.clear(); }
    // The root is its own parent.
    void GoUp() {
        if (!folders_.empty()) {
            folders_.pop_back();
        }
    }

  private:
    int root_;
    std::vector<TFileDescriptor> folders_;
};

TFileDescriptor OpenByKernel(int folder, std::string_view path, int flags, std::uint64_t resolution) {
    const std::string terminated(path);
    open_how how{};
    how.flags = static_cast<std::uint64_t>(flags | O_CLOEXEC);
    how.resolve = resolution;
    const long descriptor = ::syscall(SYS_openat2, folder, terminated.c_str(), &how, sizeof(how));
    return descriptor < 0 ? TFileDescriptor() : TFileDescriptor(static_cast<int>(descriptor));
}

TFileDescriptor OpenEntry(const TWalk& walk, const char* name, int flags) {
    return TFileDescriptor(::openat(walk.Here(), name, flags | O_CLOEXEC | O_NOFOLLOW));
}

}  // namespace

TFileDescriptor OpenInRootByKernel(int root, std::string_view path, int flags) {
    return OpenByKernel(root, path, flags, RESOLVE_IN_ROOT | RESOLVE_NO_MAGICLINKS);
}

TFileDescriptor OpenWithinFileSystem(int top, std::string_view path, int flags) {
    return OpenByKernel(top, path, flags, RESOLVE_NO_XDEV | RESOLVE_NO_MAGICLINKS);
}

TFileDescriptor OpenInRootByWalk(int root, std::string_view path, int flags) {
    TWalk walk(root);
    TPendingNames names(path);
    int links = 0;
    while (!names.IsEmpty()) {
        const std::string name = names.Pop();
        if (name == "..") {
            walk.GoUp();
            continue;
        }
        TFileDescriptor entry = OpenEntry(walk, name.c_str(), O_PATH);
        if (!entry.IsOpen()) {
            return {};
        }
        const bool keepsLink = names.IsEmpty() && (flags & O_NOFOLLOW) != 0;
        if (IsLink(entry) && !keepsLink) {
            std::string target;
            if (++links > maxLinksOnPath || !ReadTarget(entry, target)) {
                return Fail(ELOOP);
            }
            if (target.starts_with('/')) {
                walk.GoToRoot();
            }
            names.PushPath(target);
        } else if (names.IsEmpty()) {
            return OpenEntry(walk, name.c_str(), flags);
        } else {
            walk.Enter(std::move(entry));
        }
    }
    return TFileDescriptor(::openat(walk.Here(), ".", (flags & ~O_NOFOLLOW) | O_CLOEXEC));
}

}  // namespace NVORHOST
