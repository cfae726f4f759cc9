#include "vorhost/cli/private_directory.h"

#include "vorhost/cli/run_failure.h"
#include "vorhost/system/file_descriptor.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <thread>

namespace NVORHOST {
namespace {

constexpr std::string_view namePrefix = ".vorhost-";
constexpr int maxAttempts = 32;
constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;
constexpr off_t probeBytes = 65536;  // more than any buffer of the plug-in holds back

[[noreturn]] void Fail(const std::string& failure, int error) {
    throw TRunFailure(failure + ": " + std::generic_category().message(error));
}

// The descriptor of a directory whose lock was free; else -1, and errno says why.
int OpenLocked(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) {
        return -1;
    }
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        ::close(descriptor);
        errno = error;
        return -1;
    }
    return descriptor;
}

// As above, for a directory just made; -1 only when another run is removing it or has done so.
int LockOwn(const std::string& path, const std::string& failure) {
    const int descriptor = OpenLocked(path);
    if (descriptor < 0 && errno != ENOENT && errno != EWOULDBLOCK) {
        const int error = errno;
        ::rmdir(path.c_str());
        Fail(failure, error);
    }
    struct stat status {};
    if (descriptor >= 0 && (::fstat(descriptor, &status) != 0 || status.st_nlink == 0)) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

// A run that was killed leaves its directory, but not its lock.
void RemoveAbandoned(const std::string& path) {
    const int descriptor = OpenLocked(path);
    if (descriptor < 0) {
        return;
    }
    std::error_code ignored;  // somebody else's, or being removed by another run: no concern of this one
    std::filesystem::remove_all(path, ignored);
    ::close(descriptor);
}

void RemoveAllAbandoned(const std::string& target) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(target, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().filename().string().starts_with(namePrefix)) {
            RemoveAbandoned(entry->path().string());
        }
    }
}

// The plug-in may be at work in there, and quicker at making files than anybody is at removing them. It makes
// them in the working directory of the process: once that is a directory which is gone, no more can be made.
// It has to be gone before it is the working directory: in an empty one, the plug-in could be quicker.
void TakeWorkingDirectoryAway(const std::string& path) {
    const std::string nowhere = path + "/.gone";
    (void)::mkdir(nowhere.c_str(), S_IRWXU);
    const int descriptor = ::open(nowhere.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    const bool isAway = descriptor >= 0 && ::rmdir(nowhere.c_str()) == 0 && ::fchdir(descriptor) == 0;
    (void)isAway;  // no worse off than before if it is not
    ::close(descriptor);
}

void RemoveInUse(const std::string& path) {
    constexpr int maxRemovals = 1000;
    constexpr std::chrono::milliseconds pause(1);
    TakeWorkingDirectoryAway(path);
    std::error_code ignored;  // what cannot be removed is left to the next run
    for (int removal = 0; removal < maxRemovals; ++removal) {
        std::filesystem::remove_all(path, ignored);
        if (!std::filesystem::exists(std::filesystem::symlink_status(path, ignored))) {
            return;
        }
        std::this_thread::sleep_for(pause);  // something was under way, which ends by itself
    }
}

}  // namespace

TPrivateDirectory::TPrivateDirectory(const std::string& target, const std::string& failure)
    : target_(target.empty() ? "." : target) {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(target_, error);
    if (error) {
        Fail(failure, error.value());
    }
    RemoveAllAbandoned(target_);
    const std::string pattern = (absolute / (std::string(namePrefix) + "XXXXXX")).string();
    // Between making and locking it, another run may take the directory for abandoned.
    for (int attempt = 0; attempt < maxAttempts && lock_ < 0; ++attempt) {
        Make(pattern, failure);
        lock_ = LockOwn(path_, failure);
    }
    if (lock_ < 0) {
        throw TRunFailure(failure + ": other runs keep removing what this one makes");
    }
}

TPrivateDirectory::~TPrivateDirectory() {
    std::error_code ignored;  // what is left is removed by the next run
    std::filesystem::remove_all(path_, ignored);
    ::close(lock_);
}

void TPrivateDirectory::Make(const std::string& pattern, const std::string& failure) {
    unfinished_.reset();
    path_ = pattern;
    const TUninterrupted begun;
    if (::mkdtemp(path_.data()) == nullptr) {
        Fail(failure, errno);
    }
    unfinished_.emplace(begun, [path = path_] { RemoveInUse(path); });
}

void TPrivateDirectory::Protect(const std::string& fileName) const {
    if (::chmod(PathOf(fileName).c_str(), ownerOnly) != 0) {
        Fail("cannot write to " + TargetOf(fileName), errno);
    }
}

void TPrivateDirectory::MoveOut(const std::string& fileName, const TUninterrupted& /*together*/) {
    if (::rename(PathOf(fileName).c_str(), TargetOf(fileName).c_str()) != 0) {
        Fail("cannot write to " + TargetOf(fileName), errno);
    }
}

std::string TPrivateDirectory::DescribeObstacle() const {
    const std::string probe = PathOf("probe");
    const TFileDescriptor file(::open(probe.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, ownerOnly));
    const int error = file.IsOpen() ? ::posix_fallocate(file.Get(), 0, probeBytes) : errno;
    ::unlink(probe.c_str());
    return error == 0 ? "" : ": " + std::generic_category().message(error);
}

std::string TPrivateDirectory::PathOf(const std::string& fileName) const {
    return path_ + "/" + fileName;
}

std::string TPrivateDirectory::TargetOf(const std::string& fileName) const {
    return (std::filesystem::path(target_) / fileName).lexically_normal().string();
}

}  // namespace NVORHOST
