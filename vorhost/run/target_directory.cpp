#include "vorhost/run/target_directory.h"

#include "vorhost/run/run_failure.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

namespace NVORHOST {
namespace {

[[noreturn]] void Fail(const std::string& failure, int error) {
    throw TRunFailure(failure + ": " +
                      (error == ENOTDIR ? "not a directory" : std::generic_category().message(error)));
}

}  // namespace

TFileDescriptor OpenDirectory(int at, const std::string& path) {
    const std::string name = path.empty() ? "." : path;
    TFileDescriptor directory(::openat(at, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!directory.IsOpen() && errno == EACCES) {
        // Files can be created in a directory with write and search permission but no read permission.
        directory = TFileDescriptor(::openat(at, name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    return directory;
}

TTargetDirectory::TTargetDirectory(const std::string& path, const std::string& failure)
    : directory_(OpenDirectory(AT_FDCWD, path)), path_(path.empty() ? "." : path) {
    if (!directory_.IsOpen()) {
        Fail(failure, errno);
    }
}

std::string TTargetDirectory::GetPath(const std::string& fileName) const {
    return (std::filesystem::path(path_) / fileName).lexically_normal().string();
}

void TTargetDirectory::RequireWritable(const std::string& failure) const {
    if (::faccessat(GetDescriptor(), ".", W_OK | X_OK, 0) != 0) {
        Fail(failure, errno);
    }
}

TTargetLock::TTargetLock(const TTargetDirectory& target) : descriptor_(target.GetDescriptor()) {
    constexpr std::chrono::seconds limit(10);
    constexpr std::chrono::milliseconds pause(1);
    const auto end = std::chrono::steady_clock::now() + limit;
    // The call must not block, because any user who may read the directory can hold its lock forever.
    while (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR) &&
           std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(pause);
    }
}

TTargetLock::~TTargetLock() {
    (void)::flock(descriptor_, LOCK_UN);  // has no effect if the lock was not obtained
}

}  // namespace NVORHOST
