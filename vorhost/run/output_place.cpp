#include "vorhost/run/output_place.h"

#include "vorhost/run/run_failure.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <filesystem>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr int maxLinks = 40;  // the limit of the kernel

[[noreturn]] void Fail(const std::string& failure, int error) {
    throw TRunFailure(failure + ": " + std::generic_category().message(error));
}

bool IsSameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Returns N if the entry is /proc/self/fd/N, for every path to its directory.
std::optional<int> FindDescriptor(int directory, const std::string& name) {
    int number = -1;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error != std::errc() || end != name.data() + name.size() || number < 0) {
        return std::nullopt;
    }
    struct stat status {};
    struct stat own {};
    if (::fstat(directory, &status) != 0) {
        return std::nullopt;
    }
    for (const char* descriptors : {"/proc/self/fd", "/proc/thread-self/fd"}) {
        if (::stat(descriptors, &own) == 0 && IsSameFile(status, own)) {
            return number;
        }
    }
    return std::nullopt;
}

// The text of a link in /proc is not always a path to its target ("pipe:[4242]").
bool IsInProc(int directory) {
    struct statfs status {};
    return ::fstatfs(directory, &status) == 0 && status.f_type == PROC_SUPER_MAGIC;
}

// Otherwise another user who may write to the directory could redirect the output to any file of this user.
void RequireTrusted(int link, const std::string& failure) {
    struct stat status {};
    if (::fstat(link, &status) != 0) {
        Fail(failure, errno);
    }
    if (status.st_uid != ::geteuid() && status.st_uid != 0) {
        throw TRunFailure(failure + ": symbolic link of another user");
    }
}

std::string ReadLinkText(int link, const std::string& failure) {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = ::readlinkat(link, "", text.data(), text.size());
    if (length < 0) {
        Fail(failure, errno);
    }
    return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace

TOutputPlace::TOutputPlace(const std::string& path, const std::string& failure) {
    if (path == "-") {
        TakeDescriptor(STDOUT_FILENO, failure);
    } else {
        Resolve(path, failure);
    }
}

TOutputPlace::TOutputPlace(const TTargetDirectory& directory, const std::string& name) : name_(name) {
    TFileDescriptor duplicate(::fcntl(directory.GetDescriptor(), F_DUPFD_CLOEXEC, 0));
    if (!duplicate.IsOpen()) {
        Fail("cannot write " + directory.GetPath(name), errno);
    }
    directory_.emplace(std::move(duplicate), directory.GetPath(""));
    struct stat status {};
    if (::fstat(directory.GetDescriptor(), &status) == 0) {
        parent_ = {status.st_dev, status.st_ino};
    }
    if (::fstatat(directory.GetDescriptor(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
        file_ = {status.st_dev, status.st_ino};
    }
}

void TOutputPlace::TakeDescriptor(int number, const std::string& failure) {
    kind_ = EKind::descriptor;
    isStandardOutput_ = number == STDOUT_FILENO;
    descriptor_ = TFileDescriptor(::fcntl(number, F_DUPFD_CLOEXEC, 0));
    const int flags = ::fcntl(number, F_GETFL);
    if (!descriptor_.IsOpen() || (flags & O_ACCMODE) == O_RDONLY) {
        Fail(isStandardOutput_ ? "cannot write standard output" : failure, EBADF);
    }
    struct stat status {};
    if (::fstat(number, &status) == 0) {
        file_ = {status.st_dev, status.st_ino};
        isShareable_ = S_ISCHR(status.st_mode);
    }
}

void TOutputPlace::Resolve(const std::string& path, const std::string& failure) {
    std::filesystem::path rest(path);
    TFileDescriptor start;
    for (int links = 0; links < maxLinks; ++links) {
        TFileDescriptor parent =
            OpenDirectory(start.IsOpen() ? start.Get() : AT_FDCWD, rest.parent_path().string());
        if (!parent.IsOpen()) {
            Fail(failure, errno);
        }
        name_ = rest.filename().string();
        if (const auto number = FindDescriptor(parent.Get(), name_)) {
            return TakeDescriptor(*number, failure);
        }
        const TFileDescriptor entry(
            ::openat(parent.Get(), name_.empty() ? "." : name_.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
        struct stat status {};
        if (!entry.IsOpen() && errno != ENOENT) {
            Fail(failure, errno);
        }
        const bool exists = entry.IsOpen() && ::fstat(entry.Get(), &status) == 0;
        if (exists && S_ISDIR(status.st_mode)) {
            Fail(failure, EISDIR);
        }
        const bool isLink = exists && S_ISLNK(status.st_mode);
        if (!isLink || IsInProc(parent.Get())) {
            kind_ = isLink ? EKind::foreign : EKind::file;
            directory_.emplace(std::move(parent), rest.parent_path().string());
            return Identify();
        }
        RequireTrusted(entry.Get(), failure);
        rest = ReadLinkText(entry.Get(), failure);
        start = std::move(parent);
    }
    Fail(failure, ELOOP);
}

void TOutputPlace::Identify() {
    struct stat status {};
    const int directory = directory_->GetDescriptor();
    if (::fstat(directory, &status) == 0) {
        parent_ = {status.st_dev, status.st_ino};
    }
    const int flags = kind_ == EKind::foreign ? 0 : AT_SYMLINK_NOFOLLOW;
    if (::fstatat(directory, name_.c_str(), &status, flags) == 0) {
        file_ = {status.st_dev, status.st_ino};
        isShareable_ = S_ISCHR(status.st_mode);
        if (kind_ == EKind::file && !S_ISREG(status.st_mode)) {
            kind_ = EKind::special;
        }
    }
}

TFileDescriptor TOutputPlace::OpenDirectly() const {
    if (kind_ == EKind::descriptor) {
        return TFileDescriptor(::fcntl(descriptor_.Get(), F_DUPFD_CLOEXEC, 0));
    }
    const int flags = kind_ == EKind::foreign ? O_TRUNC : O_NOFOLLOW;
    TFileDescriptor opened(
        ::openat(directory_->GetDescriptor(), name_.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC | flags));
    struct stat status {};
    const bool isAnother =
        opened.IsOpen() && kind_ == EKind::special &&
        (::fstat(opened.Get(), &status) != 0 || TIdentity{status.st_dev, status.st_ino} != *file_);
    if (isAnother) {
        errno = ESTALE;
        return {};
    }
    return opened;
}

bool TOutputPlace::IsSameAs(const TOutputPlace& other) const {
    if (file_ && other.file_) {
        return *file_ == *other.file_ && !isShareable_;
    }
    return parent_ && parent_ == other.parent_ && name_ == other.name_;
}

void RequireDistinct(const std::vector<TOutputPurpose>& places) {
    for (auto one = places.begin(); one != places.end(); ++one) {
        for (auto other = places.begin(); other != one; ++other) {
            if (one->place.IsSameAs(other->place)) {
                throw TRunFailure(other->description + " and " + one->description + " are the same file");
            }
        }
    }
}

TOutputPlace ResolveOutputPlace(const std::string& file, const std::optional<std::string>& logFile) {
    TOutputPlace place(file, "cannot write " + file);
    if (logFile) {
        const TOutputPlace log(*logFile, "cannot append to log file " + *logFile);
        RequireDistinct({{"the log file " + *logFile, log}, {"the output file " + file, place}});
    }
    return place;
}

}  // namespace NVORHOST
