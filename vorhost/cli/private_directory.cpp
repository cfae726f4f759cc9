#include "vorhost/cli/private_directory.h"

#include "vorhost/cli/run_failure.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr std::string_view namePrefix = ".vorhost-";
constexpr int maxAttempts = 32;
constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;

[[noreturn]] void Fail(const std::string& path, int error) {
    throw TRunFailure("cannot write to " + path + ": " + std::strerror(error));
}

// The descriptor of a directory whose lock was free, or -1.
int OpenLocked(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) {
        return -1;
    }
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

// As above, for a directory just made; -1 as well when another run has removed it meanwhile.
int LockOwn(const std::string& path) {
    const int descriptor = OpenLocked(path);
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

}  // namespace

TPrivateDirectory::TPrivateDirectory(const std::string& target) : target_(target) {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(target, error);
    if (error) {
        Fail(target, error.value());
    }
    RemoveAllAbandoned(target);
    const std::string pattern = (absolute / (std::string(namePrefix) + "XXXXXX")).string();
    // Between making and locking it, another run may take the directory for abandoned.
    for (int attempt = 0; attempt < maxAttempts && lock_ < 0; ++attempt) {
        path_ = pattern;
        if (::mkdtemp(path_.data()) == nullptr) {
            Fail(target, errno);
        }
        lock_ = LockOwn(path_);
    }
    if (lock_ < 0) {
        throw TRunFailure("cannot write to " + target + ": other runs keep removing what this one makes");
    }
}

TPrivateDirectory::~TPrivateDirectory() {
    std::error_code ignored;  // what is left is removed by the next run
    std::filesystem::remove_all(path_, ignored);
    ::close(lock_);
}

void TPrivateDirectory::MoveOut(const std::string& fileName) {
    const std::string from = path_ + "/" + fileName;
    const std::string to = (std::filesystem::path(target_) / fileName).lexically_normal().string();
    if (::chmod(from.c_str(), ownerOnly) != 0 || ::rename(from.c_str(), to.c_str()) != 0) {
        Fail(to, errno);
    }
}

}  // namespace NVORHOST
