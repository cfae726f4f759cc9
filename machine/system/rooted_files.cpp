#include "machine/system/rooted_files.h"

#include "os/path_resolver.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <memory>
#include <system_error>
#include <utility>

namespace NVORHOST {
namespace {

constexpr char notRegular[] = "not a regular file";

// The resolver refuses links of /proc without a path as target with ELOOP, which counts as `failed`.
EReadStatus StatusOf(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR:
            return EReadStatus::notFound;
        case EACCES:
        case EPERM:
            return EReadStatus::denied;
        default:
            return EReadStatus::failed;
    }
}

// True for the errors of reading an attribute that exists for every device of a kind but has no value for
// this one (a disk without a world-wide name, an interface without a speed), or whose device has gone.
bool IsWithoutValue(int error) {
    constexpr int errors[] = {EINVAL, ENXIO, ENODATA, EOPNOTSUPP, ENODEV};
    return std::ranges::find(errors, error) != std::end(errors);
}

std::string Describe(std::string_view path, int error) {
    return std::string(path) + ": " + std::generic_category().message(error);
}

void RequireResources(std::string_view path, int error) {
    if (IsExhaustion(error)) {
        throw TResourcesExhausted(Describe(path, error));
    }
}

template <typename T>
TReadResult<T> Failure(std::string_view path, int error) {
    RequireResources(path, error);
    return {StatusOf(error), T{}, Describe(path, error), error};
}

template <typename T>
TReadResult<T> Refusal(std::string_view path, const char* reason) {
    return {EReadStatus::failed, T{}, std::string(path) + ": " + reason};
}

// Appends to `bytes` up to the end of the file or to `limit`. Returns false with errno set if a read fails.
bool ReadUpTo(const TFileDescriptor& file, std::size_t limit, std::string& bytes) {
    // Attributes of sysfs are at most a page, files of /proc come in pages, and most files have a few bytes.
    std::array<char, std::size_t{16} << 10> block;  // NOLINT(*-member-init): read fills it
    while (bytes.size() < limit) {
        const ssize_t got = read(file.Get(), block.data(), std::min(block.size(), limit - bytes.size()));
        if (got == 0) {
            return true;
        }
        if (got < 0 && errno != EINTR) {
            return false;
        }
        bytes.append(block.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    }
    return true;
}

struct TCloseDir {
    void operator()(DIR* folder) const { (void)closedir(folder); }
};
using TFolder = std::unique_ptr<DIR, TCloseDir>;

// File systems of the kernel, and their types in statfs(2).
struct TKernelFileSystem {
    std::string_view prefix;
    decltype(statfs::f_type) type;
};

constexpr TKernelFileSystem kernelFileSystems[] = {
    {"/sys/", SYSFS_MAGIC},
    {"/proc/", PROC_SUPER_MAGIC},
};

bool IsDotEntry(std::string_view name) {
    return name == "." || name == "..";
}

}  // namespace

bool IsExhaustion(int error) {
    constexpr int errors[] = {EMFILE, ENFILE, ENOMEM, ENOBUFS};
    return std::ranges::find(errors, error) != std::end(errors);
}

TRootedFiles::TRootedFiles(std::string root, EPathResolution resolution)
    : root_(std::move(root)),
      resolution_(resolution),
      rootFolder_(open(root_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)),
      rootError_(rootFolder_.IsOpen() ? 0 : errno) {
    if (IsLive()) {
        OpenKernelFolders();
    }
}

void TRootedFiles::OpenKernelFolders() {
    for (const TKernelFileSystem& fileSystem : kernelFileSystems) {
        const std::string path(fileSystem.prefix);
        TFileDescriptor folder(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        struct statfs status {};
        if (folder.IsOpen() && fstatfs(folder.Get(), &status) == 0 && status.f_type == fileSystem.type) {
            kernelFolders_.push_back({fileSystem.prefix, std::move(folder)});
        }
    }
}

TFileDescriptor TRootedFiles::Open(std::string_view path, int flags) const {
    if (!rootFolder_.IsOpen()) {
        errno = rootError_;
        return {};
    }
    if (IsLive()) {
        return TFileDescriptor(open(std::string(path).c_str(), flags | O_CLOEXEC));
    }
    if (resolution_ == EPathResolution::walk) {
        return OpenInRootByWalk(rootFolder_.Get(), path, flags);
    }
    TFileDescriptor opened = OpenInRootByKernel(rootFolder_.Get(), path, flags);
    // System call filters return EPERM for unknown calls. The kernel returns EAGAIN if a concurrent rename
    // makes the target of a ".." uncertain.
    if (!opened.IsOpen() && (errno == ENOSYS || errno == EPERM || errno == EAGAIN)) {
        return OpenInRootByWalk(rootFolder_.Get(), path, flags);
    }
    return opened;
}

// Files of sysfs and procfs are never device nodes or fifos, so they can be opened without a check: a
// collection opens hundreds of them. Files of a file system mounted over them are not opened this way.
TFileDescriptor TRootedFiles::OpenKernelFile(std::string_view path) const {
    for (const TKernelFolder& kernel : kernelFolders_) {
        if (path.starts_with(kernel.prefix)) {
            return OpenWithinFileSystem(kernel.folder.Get(), path.substr(kernel.prefix.size()), O_RDONLY);
        }
    }
    errno = EXDEV;
    return {};
}

TReadResult<TFileDescriptor> TRootedFiles::OpenRegularFile(std::string_view path) const {
    TFileDescriptor kernelFile = OpenKernelFile(path);
    if (kernelFile.IsOpen()) {
        return {EReadStatus::ok, std::move(kernelFile), {}};
    }
    if (errno == ENOENT || errno == EACCES) {
        return Failure<TFileDescriptor>(path, errno);
    }
    // Opening a device node or a fifo may have side effects. So the kind of file is checked through an O_PATH
    // descriptor, and then that same file is opened.
    const TFileDescriptor named = Open(path, O_PATH);
    if (!named.IsOpen()) {
        return Failure<TFileDescriptor>(path, errno);
    }
    struct stat status {};
    if (fstat(named.Get(), &status) != 0) {
        return Failure<TFileDescriptor>(path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return Refusal<TFileDescriptor>(path, notRegular);
    }
    const std::string byDescriptor = "/proc/self/fd/" + std::to_string(named.Get());
    TFileDescriptor file(open(byDescriptor.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.IsOpen()) {
        return Failure<TFileDescriptor>(path, errno);
    }
    return {EReadStatus::ok, std::move(file), {}};
}

TReadResult<std::string> TRootedFiles::ReadText(std::string_view path) const {
    auto text = ReadBytes(path, maxFileBytes + 1);
    if (text.value.size() > maxFileBytes) {
        return Refusal<std::string>(path, "larger than any file worth reading");
    }
    return text;
}

TReadResult<std::string> TRootedFiles::ReadBytes(std::string_view path, std::size_t maxBytes) const {
    const auto file = OpenRegularFile(path);
    if (!file.IsOk()) {
        return {file.status, {}, file.error, file.cause};
    }
    TReadResult<std::string> result{EReadStatus::ok, {}, {}};
    if (!ReadUpTo(file.value, maxBytes, result.value)) {
        if (errno == EISDIR) {
            return Refusal<std::string>(path, notRegular);
        }
        auto failure = Failure<std::string>(path, errno);
        failure.status = IsWithoutValue(errno) ? EReadStatus::notFound : failure.status;
        return failure;
    }
    return result;
}

TReadResult<std::vector<std::string>> TRootedFiles::List(std::string_view path) const {
    using TNames = std::vector<std::string>;
    TFileDescriptor opened = Open(path, O_RDONLY | O_DIRECTORY);
    const TFolder folder(opened.IsOpen() ? fdopendir(opened.Get()) : nullptr);
    if (!folder) {
        return Failure<TNames>(path, errno);
    }
    (void)opened.Release();  // closedir closes it
    TNames names;
    errno = 0;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread has this stream
    while (const dirent* entry = readdir(folder.get())) {
        if (!IsDotEntry(entry->d_name)) {
            if (names.size() == maxFolderEntries) {
                return Refusal<TNames>(path, "larger than any folder worth listing");
            }
            names.emplace_back(entry->d_name);
        }
        errno = 0;
    }
    if (errno != 0) {
        return Failure<TNames>(path, errno);
    }
    std::sort(names.begin(), names.end());
    return {EReadStatus::ok, std::move(names), {}};
}

// Returns the length of the target, or -1 with the cause in errno: EINVAL for a file that is not a link.
ssize_t TRootedFiles::ReadTarget(std::string_view path, char* target, std::size_t size) const {
    if (IsLive()) {
        return readlink(std::string(path).c_str(), target, size);
    }
    const TFileDescriptor link = Open(path, O_PATH | O_NOFOLLOW);
    if (!link.IsOpen()) {
        return -1;
    }
    const ssize_t length = readlinkat(link.Get(), "", target, size);
    if (length < 0 && errno == ENOENT) {
        errno = EINVAL;  // readlinkat with an empty path fails so for a file that is not a link
    }
    return length;
}

TReadResult<std::string> TRootedFiles::ReadLink(std::string_view path) const {
    std::array<char, PATH_MAX> target;  // NOLINT(*-member-init): readlink fills it
    const ssize_t length = ReadTarget(path, target.data(), target.size());
    if (length < 0 && errno == EINVAL) {
        return Refusal<std::string>(path, "not a symbolic link");
    }
    if (length < 0) {
        return Failure<std::string>(path, errno);
    }
    return {EReadStatus::ok, std::string(target.data(), static_cast<std::size_t>(length)), {}};
}

bool TRootedFiles::Exists(std::string_view path) const {
    const TFileDescriptor opened = Open(path, O_PATH);
    if (!opened.IsOpen()) {
        RequireResources(path, errno);
    }
    return opened.IsOpen();
}

}  // namespace NVORHOST
