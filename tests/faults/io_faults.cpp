// Preloaded into the program under test: fails one of its input and output calls, so that the failure of each
// of them can be tested. The environment selects the call:
//
//   NOXINFO_FAULT=write:3:ENOSPC    the third call of that kind; "3+" for every one from the third on
//   NOXINFO_FAULT_PATHS=/a:/b       only calls for paths at or below one of these count
//   NOXINFO_FAULT_REPORT=/file      receives "KIND PATH" of the first failed call
//   NOXINFO_WITHOUT_OPENAT2=1       openat2 fails with ENOSYS, as in kernels before 5.6
//
// Kinds: open (and openat2 by itself), create, mkdir, list, readlink, stat, read, write, close, rename,
// chmod, unlink, sync, lock, chdir. Besides errors there are these effects. SHORT: read or write transfers
// half of the bytes and returns that count. FULL: write omits its last byte, and every later one fails with
// ENOSPC. KILL: the program is killed before the call. TERM: the program gets that signal and continues.
// BLOCK: the call does not return. LATE: the call returns after a second. ENDLESS: the file of a read, or the
// folder of a list, never ends. A failed close has closed the descriptor, as in the kernel. Only the
// functions that the program and its libraries call are wrapped; a call through another function is not
// counted, so that the table of the test misses it.
//
// Names and untyped arguments are those of the C library. The environment is read once, at the first call.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,concurrency-mt-unsafe,performance-no-int-to-ptr)
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

// Used in place of an errno.
constexpr int shortCount = -1;
constexpr int fullDisk = -2;
constexpr int killed = -3;
constexpr int terminated = -4;
constexpr int doneByNobody = -5;
constexpr int cutWithNames = -6;
constexpr int cutWithoutNames = -7;
constexpr int blocked = -8;
constexpr int late = -9;
constexpr int endless = -10;

struct TErrorName {
    std::string_view name;
    int error;
};

constexpr TErrorName errorNames[] = {
    {"ENOSPC", ENOSPC},    {"EIO", EIO},
    {"EMFILE", EMFILE},    {"EROFS", EROFS},
    {"EINTR", EINTR},      {"EAGAIN", EAGAIN},
    {"EACCES", EACCES},    {"SHORT", shortCount},
    {"FULL", fullDisk},    {"KILL", killed},
    {"TERM", terminated},  {"DONE", doneByNobody},
    {"CUT", cutWithNames}, {"CUTNAMES", cutWithoutNames},
    {"ENOMEM", ENOMEM},    {"BLOCK", blocked},
    {"LATE", late},        {"ENDLESS", endless},
};

// The part of a call that is performed in spite of its fault.
enum class EFate { passes, fails, isHalved, lacksItsLastByte, isOnlySaid, isEndless };

std::string_view Environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : value;
}

std::string_view TakeField(std::string_view& text) {
    const std::string_view field = text.substr(0, text.find(':'));
    text.remove_prefix(std::min(field.size() + 1, text.size()));
    return field;
}

std::string DescriptorPath(int descriptor) {
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    std::array<char, PATH_MAX> target{};
    // The system call itself, because this call must not count.
    const long length = ::syscall(SYS_readlinkat, AT_FDCWD, link.c_str(), target.data(), target.size());
    return length < 0 ? std::string() : std::string(target.data(), static_cast<std::size_t>(length));
}

std::string WorkingDirectory() {
    std::array<char, PATH_MAX> path{};
    return getcwd(path.data(), path.size()) == nullptr ? std::string() : path.data();
}

// Returns the absolute path without "." and duplicate slashes.
std::string FullPath(int directory, std::string_view path) {
    constexpr std::string_view descriptors = "/proc/self/fd/";
    if (path.starts_with(descriptors)) {
        return DescriptorPath(
            static_cast<int>(std::strtol(path.substr(descriptors.size()).data(), nullptr, 10)));
    }
    std::string full;
    if (!path.starts_with('/') || directory != AT_FDCWD) {  // openat2 below a root takes any path as relative
        full = directory == AT_FDCWD ? WorkingDirectory() : DescriptorPath(directory);
    }
    while (!path.empty()) {
        const std::string_view name = path.substr(0, path.find('/'));
        if (!name.empty() && name != ".") {
            full.append("/").append(name);
        }
        path.remove_prefix(std::min(name.size() + 1, path.size()));
    }
    return full;
}

class TFault {
  public:
    TFault() {
        std::string_view text = Environment("NOXINFO_FAULT");
        kind_ = TakeField(text);
        std::string number(TakeField(text));
        isLasting_ = number.ends_with('+');
        number_ = std::strtoul(number.c_str(), nullptr, 10);
        for (const TErrorName& row : errorNames) {
            error_ = row.name == text ? row.error : error_;
        }
        paths_ = Environment("NOXINFO_FAULT_PATHS");
        report_ = Environment("NOXINFO_FAULT_REPORT");
        if (!kind_.empty() && (number_ == 0 || error_ == 0)) {
            std::abort();
        }
    }

    bool Watches(std::string_view kind) const { return kind == kind_; }

    bool LosesPower() const { return error_ == cutWithNames || error_ == cutWithoutNames; }

    /// Counts a call of the watched kind and returns its outcome; sets errno if it fails.
    EFate Meet(std::string_view path) {
        if (!IsWatched(path)) {
            return EFate::passes;
        }
        const unsigned long count = ++count_;
        if (count < number_ || (count > number_ && !isLasting_ && error_ != fullDisk)) {
            return EFate::passes;
        }
        if (count == number_) {
            Report(std::string(kind_).append(" ").append(path).append("\n"));
        }
        if (error_ == killed || error_ == terminated) {
            (void)std::raise(error_ == killed ? SIGKILL : SIGTERM);
            return EFate::passes;
        }
        if (LosesPower()) {
            ShutDown();
            (void)std::raise(SIGKILL);
        }
        if (error_ == doneByNobody) {
            return EFate::isOnlySaid;
        }
        if (error_ == blocked) {
            BlockForEver();
        }
        if (error_ == late) {
            ::sleep(1);
            return EFate::passes;
        }
        if (error_ == shortCount || error_ == endless) {
            return error_ == endless ? EFate::isEndless : EFate::isHalved;
        }
        if (error_ == fullDisk && count == number_) {
            return EFate::lacksItsLastByte;
        }
        errno = error_ == fullDisk ? ENOSPC : error_;
        return EFate::fails;
    }

  private:
    // Blocks like a call within the kernel: only SIGKILL ends it.
    [[noreturn]] static void BlockForEver() {
        sigset_t all;
        ::sigfillset(&all);
        (void)::pthread_sigmask(SIG_BLOCK, &all, nullptr);
        for (;;) {
            ::pause();
        }
    }

    bool IsWatched(std::string_view path) const {
        std::string_view paths = paths_;
        while (!paths.empty()) {
            const std::string_view watched = TakeField(paths);
            if (path.starts_with(watched) && (path.size() == watched.size() || path[watched.size()] == '/')) {
                return true;
            }
        }
        return false;
    }

    // Shuts the file system down with the request of ext4 and XFS.
    void ShutDown() const {
        constexpr unsigned long request = 0x8004587D;
        const unsigned flags = error_ == cutWithNames ? 1 : 2;
        const std::string path(paths_.substr(0, paths_.find(':')));
        const auto folder = ::syscall(SYS_openat, AT_FDCWD, path.c_str(), O_RDONLY | O_CLOEXEC, 0);
        if (::syscall(SYS_ioctl, folder, request, &flags) != 0) {
            std::abort();
        }
    }

    void Report(const std::string& line) const {
        const auto file =
            ::syscall(SYS_openat, AT_FDCWD, report_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        (void)::syscall(SYS_write, file, line.data(), line.size());
        (void)::syscall(SYS_close, file);
    }

    std::string_view kind_;
    unsigned long number_ = 0;
    bool isLasting_ = false;
    int error_ = 0;
    std::string_view paths_;
    std::string report_;
    std::atomic<unsigned long> count_{0};
};

TFault& Fault() {
    static TFault fault;
    return fault;
}

template <typename TFindPath>
EFate MeetAt(const char* kind, const TFindPath& findPath) {
    TFault& fault = Fault();
    if (!fault.Watches(kind)) {
        return EFate::passes;
    }
    const int errorBefore = errno;
    const std::string path = findPath();
    errno = errorBefore;
    return fault.Meet(path);
}

EFate MeetPath(const char* kind, const char* path, int directory = AT_FDCWD) {
    return MeetAt(kind, [=] { return FullPath(directory, path); });
}

EFate MeetDescriptor(const char* kind, int descriptor) {
    return MeetAt(kind, [=] { return DescriptorPath(descriptor); });
}

std::size_t SizeLeft(EFate fate, std::size_t size) {
    if (fate == EFate::isHalved) {
        return (size + 1) / 2;
    }
    return fate == EFate::lacksItsLastByte ? size - 1 : size;
}

mode_t ModeOf(int flags, va_list rest) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
}

}  // namespace

extern "C" {

#define NOXINFO_PRELOADED __attribute__((visibility("default")))
/// Returns the original of a wrapped function.
#define NOXINFO_NEXT(function) reinterpret_cast<decltype(&(function))>(dlsym(RTLD_NEXT, #function))

NOXINFO_PRELOADED int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    return MeetPath("open", path) == EFate::fails ? -1 : NOXINFO_NEXT(open)(path, flags, mode);
}

NOXINFO_PRELOADED int openat(int directory, const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    return MeetPath("open", path, directory) == EFate::fails
               ? -1
               : NOXINFO_NEXT(openat)(directory, path, flags, mode);
}

// With fortified calls, the compiler turns an openat with variable flags into this function.
NOXINFO_PRELOADED int __openat_2(int directory, const char* path, int flags) {
    return MeetPath("open", path, directory) == EFate::fails ? -1
                                                             : NOXINFO_NEXT(openat)(directory, path, flags);
}

NOXINFO_PRELOADED std::FILE* fopen64(const char* path, const char* mode) {
    return MeetPath("open", path) == EFate::fails ? nullptr : NOXINFO_NEXT(fopen64)(path, mode);
}

// openat2 has no function of its own in the C library.
NOXINFO_PRELOADED long syscall(long number, ...) noexcept {
    std::array<long, 6> rest{};
    va_list arguments;
    va_start(arguments, number);
    for (long& argument : rest) {
        argument = va_arg(arguments, long);
    }
    va_end(arguments);
    if (number == SYS_openat2 && !Environment("NOXINFO_WITHOUT_OPENAT2").empty()) {
        errno = ENOSYS;
        return -1;
    }
    for (const char* kind : {"open", "openat2"}) {
        if (number == SYS_openat2 && MeetPath(kind, reinterpret_cast<const char*>(rest[1]),
                                              static_cast<int>(rest[0])) == EFate::fails) {
            return -1;
        }
    }
    return NOXINFO_NEXT(syscall)(number, rest[0], rest[1], rest[2], rest[3], rest[4], rest[5]);
}

// A name that does not exist yet is reported as its pattern.
NOXINFO_PRELOADED int mkstemp(char* pattern) {
    return MeetPath("create", pattern) == EFate::fails ? -1 : NOXINFO_NEXT(mkstemp)(pattern);
}

NOXINFO_PRELOADED char* mkdtemp(char* pattern) noexcept {
    return MeetPath("mkdir", pattern) == EFate::fails ? nullptr : NOXINFO_NEXT(mkdtemp)(pattern);
}

NOXINFO_PRELOADED int mkdirat(int directory, const char* path, mode_t mode) noexcept {
    return MeetPath("mkdir", path, directory) == EFate::fails ? -1
                                                              : NOXINFO_NEXT(mkdirat)(directory, path, mode);
}

// The folder that a fault has made endless. Kept because looking its path up for each of a million entries is
// slow.
static const DIR* endlessFolder = nullptr;

NOXINFO_PRELOADED int closedir(DIR* folder) {
    if (folder == endlessFolder) {
        endlessFolder = nullptr;
    }
    return NOXINFO_NEXT(closedir)(folder);
}

NOXINFO_PRELOADED DIR* fdopendir(int descriptor) {
    return MeetDescriptor("list", descriptor) == EFate::fails ? nullptr : NOXINFO_NEXT(fdopendir)(descriptor);
}

NOXINFO_PRELOADED struct dirent* readdir(DIR* folder) {
    static struct dirent endlessEntry {};
    if (folder == endlessFolder) {
        return &endlessEntry;
    }
    switch (MeetDescriptor("list", dirfd(folder))) {
        case EFate::fails:
            return nullptr;
        case EFate::isEndless:
            std::strcpy(endlessEntry.d_name, "endless");
            endlessFolder = folder;
            return &endlessEntry;
        default:
            return NOXINFO_NEXT(readdir)(folder);
    }
}

NOXINFO_PRELOADED ssize_t readlinkat(int directory, const char* path, char* target,
                                     std::size_t size) noexcept {
    return MeetPath("readlink", path, directory) == EFate::fails
               ? -1
               : NOXINFO_NEXT(readlinkat)(directory, path, target, size);
}

NOXINFO_PRELOADED ssize_t read(int descriptor, void* bytes, std::size_t size) {
    const EFate fate = MeetDescriptor("read", descriptor);
    if (fate == EFate::isEndless) {
        std::memset(bytes, 'x', size);
        return static_cast<ssize_t>(size);
    }
    return fate == EFate::fails ? -1 : NOXINFO_NEXT(read)(descriptor, bytes, SizeLeft(fate, size));
}

NOXINFO_PRELOADED ssize_t pread(int descriptor, void* bytes, std::size_t size, off_t offset) {
    const EFate fate = MeetDescriptor("read", descriptor);
    return fate == EFate::fails ? -1 : NOXINFO_NEXT(pread)(descriptor, bytes, SizeLeft(fate, size), offset);
}

NOXINFO_PRELOADED ssize_t write(int descriptor, const void* bytes, std::size_t size) {
    const EFate fate = MeetDescriptor("write", descriptor);
    return fate == EFate::fails ? -1 : NOXINFO_NEXT(write)(descriptor, bytes, SizeLeft(fate, size));
}

NOXINFO_PRELOADED ssize_t writev(int descriptor, const iovec* parts, int count) {
    const EFate fate = MeetDescriptor("write", descriptor);
    if (fate == EFate::passes) {
        return NOXINFO_NEXT(writev)(descriptor, parts, count);
    }
    std::string bytes;
    for (int part = 0; part < count; ++part) {
        bytes.append(static_cast<const char*>(parts[part].iov_base), parts[part].iov_len);
    }
    return fate == EFate::fails ? -1
                                : NOXINFO_NEXT(write)(descriptor, bytes.data(), SizeLeft(fate, bytes.size()));
}

NOXINFO_PRELOADED int posix_fallocate(int descriptor, off_t offset, off_t size) {
    return MeetDescriptor("write", descriptor) == EFate::fails
               ? errno
               : NOXINFO_NEXT(posix_fallocate)(descriptor, offset, size);
}

NOXINFO_PRELOADED int close(int descriptor) {
    const bool fails = MeetDescriptor("close", descriptor) == EFate::fails;
    const int error = errno;
    const int result = NOXINFO_NEXT(close)(descriptor);
    if (fails) {
        errno = error;
    }
    return fails ? -1 : result;
}

NOXINFO_PRELOADED int fclose(std::FILE* file) {
    const bool fails = MeetDescriptor("close", fileno(file)) == EFate::fails;
    const int error = errno;
    const int result = NOXINFO_NEXT(fclose)(file);
    if (fails) {
        errno = error;
    }
    return fails ? EOF : result;
}

NOXINFO_PRELOADED int rename(const char* from, const char* to) noexcept {
    return MeetPath("rename", to) == EFate::fails ? -1 : NOXINFO_NEXT(rename)(from, to);
}

NOXINFO_PRELOADED int renameat(int fromDirectory, const char* from, int toDirectory,
                               const char* to) noexcept {
    return MeetPath("rename", to, toDirectory) == EFate::fails
               ? -1
               : NOXINFO_NEXT(renameat)(fromDirectory, from, toDirectory, to);
}

NOXINFO_PRELOADED int fchmod(int descriptor, mode_t mode) noexcept {
    return MeetDescriptor("chmod", descriptor) == EFate::fails ? -1 : NOXINFO_NEXT(fchmod)(descriptor, mode);
}

NOXINFO_PRELOADED int fstat(int descriptor, struct stat* status) noexcept {
    return MeetDescriptor("stat", descriptor) == EFate::fails ? -1 : NOXINFO_NEXT(fstat)(descriptor, status);
}

NOXINFO_PRELOADED int fstatat(int directory, const char* path, struct stat* status, int flags) noexcept {
    return MeetPath("stat", path, directory) == EFate::fails
               ? -1
               : NOXINFO_NEXT(fstatat)(directory, path, status, flags);
}

// Only counted, except in tests of power failures: waiting for the disk in thousands of runs would test
// nothing more.
NOXINFO_PRELOADED int fsync(int descriptor) {
    const EFate fate = MeetDescriptor("sync", descriptor);
    return fate == EFate::fails ? -1 : Fault().LosesPower() ? NOXINFO_NEXT(fsync)(descriptor) : 0;
}

NOXINFO_PRELOADED int flock(int descriptor, int operation) noexcept {
    const EFate fate = MeetDescriptor("lock", descriptor);
    if (fate == EFate::isOnlySaid) {
        return 0;
    }
    return fate == EFate::fails ? -1 : NOXINFO_NEXT(flock)(descriptor, operation);
}

NOXINFO_PRELOADED int fchdir(int descriptor) noexcept {
    return MeetDescriptor("chdir", descriptor) == EFate::fails ? -1 : NOXINFO_NEXT(fchdir)(descriptor);
}

NOXINFO_PRELOADED int faccessat(int directory, const char* path, int mode, int flags) noexcept {
    return MeetPath("stat", path, directory) == EFate::fails
               ? -1
               : NOXINFO_NEXT(faccessat)(directory, path, mode, flags);
}

NOXINFO_PRELOADED int chmod(const char* path, mode_t mode) noexcept {
    return MeetPath("chmod", path) == EFate::fails ? -1 : NOXINFO_NEXT(chmod)(path, mode);
}

NOXINFO_PRELOADED int unlink(const char* path) noexcept {
    return MeetPath("unlink", path) == EFate::fails ? -1 : NOXINFO_NEXT(unlink)(path);
}

NOXINFO_PRELOADED int remove(const char* path) noexcept {
    return MeetPath("unlink", path) == EFate::fails ? -1 : NOXINFO_NEXT(remove)(path);
}

NOXINFO_PRELOADED int rmdir(const char* path) noexcept {
    return MeetPath("unlink", path) == EFate::fails ? -1 : NOXINFO_NEXT(rmdir)(path);
}

NOXINFO_PRELOADED int unlinkat(int directory, const char* path, int flags) noexcept {
    return MeetPath("unlink", path, directory) == EFate::fails
               ? -1
               : NOXINFO_NEXT(unlinkat)(directory, path, flags);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,concurrency-mt-unsafe,performance-no-int-to-ptr)
