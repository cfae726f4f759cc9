#include "fleet/program/site_directory.h"

#include "fleet/report/site_paths.h"
#include "text/shown_text.h"
#include "vorhost/run/run_failure.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <system_error>
#include <vector>

namespace NFLEET {
namespace {

namespace fs = std::filesystem;
using NVORHOST::TFileDescriptor;
using NVORHOST::ToShownText;
using NVORHOST::TRunFailure;

constexpr std::string_view markerName = ".noxinfo-fleet-site";
constexpr std::string_view markerText =
    "This directory was made by noxinfo fleet report, which replaces it.\n";
constexpr std::string_view workInfix = ".noxinfo-";
constexpr std::string_view workSuffix = "XXXXXX";

[[noreturn]] void Fail(const fs::path& path, const std::string& cause) {
    throw TRunFailure(ToShownText("cannot write " + path.string() + ": " + cause));
}

[[noreturn]] void FailWithError(const fs::path& path, int error) {
    Fail(path, std::generic_category().message(error));
}

// True for what a site consists of. Its folders have no other names than those of its pages.
bool IsOfSite(const fs::path& path, bool isDirectory) {
    const std::string name = path.generic_string();
    return isDirectory ? IsSitePath(name + "/0.html") || name == "m" : name == markerName || IsSitePath(name);
}

// Returns something in a directory that is not of a site; nullopt if there is nothing else.
std::optional<fs::path> FindForeign(const fs::path& directory) {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(directory)) {
        const fs::file_status status = entry.symlink_status();
        const bool isDirectory = fs::is_directory(status);
        if ((!isDirectory && !fs::is_regular_file(status)) ||
            !IsOfSite(entry.path().lexically_relative(directory), isDirectory)) {
            return entry.path();
        }
    }
    return std::nullopt;
}

// Removes a site. Files of others stay, and with them their directories.
void RemoveSite(const fs::path& directory) {
    std::vector<fs::path> paths{directory};
    std::error_code error;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(directory, error)) {
        const bool isDirectory = fs::is_directory(entry.symlink_status());
        if (isDirectory || IsOfSite(entry.path().lexically_relative(directory), isDirectory)) {
            paths.push_back(entry.path());
        }
    }
    std::ranges::reverse(paths);
    for (const fs::path& path : paths) {
        (void)fs::remove(path, error);  // a directory with other files stays
    }
}

void WriteAll(int file, std::string_view bytes, const fs::path& path) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            FailWithError(path, errno);
        }
        bytes.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
}

mode_t GetDirectoryMode() {
    const mode_t mask = ::umask(0);
    (void)::umask(mask);
    return static_cast<mode_t>(ACCESSPERMS & ~mask);
}

// Exchanges two directories; on file systems that cannot do that, for a moment neither is at `target`.
// Returns 0 or the errno of the failure.
int Exchange(const fs::path& work, const fs::path& target) {
    if (::renameat2(AT_FDCWD, work.c_str(), AT_FDCWD, target.c_str(), RENAME_EXCHANGE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    const fs::path aside = work.string() + "-old";
    if (::rename(target.c_str(), aside.c_str()) != 0) {
        return errno;
    }
    if (::rename(work.c_str(), target.c_str()) != 0) {
        const int error = errno;
        (void)::rename(aside.c_str(), target.c_str());
        return error;
    }
    return ::rename(aside.c_str(), work.c_str()) == 0 ? 0 : errno;
}

}  // namespace

TSiteDirectory::TSiteDirectory(const std::string& path) {
    std::error_code error;
    target_ = fs::weakly_canonical(fs::absolute(path), error);
    if (error) {
        Fail(path, error.message());
    }
    if (!target_.has_filename()) {
        target_ = target_.parent_path();
    }
    if (target_ == target_.root_path()) {
        Fail(path, "it is the root directory");
    }
    RequireReplaceable();
    RemoveAbandoned();
    const NVORHOST::TSignalGuard guard;
    try {
        Create();
        cleanup_.emplace(guard, [this] { Discard(); });
    } catch (...) {
        Discard();
        throw;
    }
}

TSiteDirectory::~TSiteDirectory() {
    cleanup_.reset();
    Discard();
}

void TSiteDirectory::RequireReplaceable() const {
    try {
        const fs::file_status status = fs::symlink_status(target_);
        if (!fs::exists(status)) {
            return;
        }
        if (!fs::is_directory(status)) {
            Fail(target_, "it is not a directory");
        }
        if (!fs::is_empty(target_) && !fs::exists(target_ / markerName)) {
            Fail(target_, "it exists, and noxinfo fleet report did not make it; choose another directory");
        }
        if (const auto foreign = FindForeign(target_)) {
            Fail(target_,
                 "noxinfo fleet report did not make " + foreign->string() + ", which would be removed");
        }
    } catch (const fs::filesystem_error& error) {
        Fail(target_, error.code().message());
    }
}

void TSiteDirectory::RemoveAbandoned() const {
    const std::string start = "." + target_.filename().string() + std::string(workInfix);
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(target_.parent_path(), error)) {
        const std::string name = entry.path().filename().string();
        if (!name.starts_with(start) || name.size() != start.size() + workSuffix.size()) {
            continue;
        }
        const TFileDescriptor directory(
            ::open(entry.path().c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        // A run holds the lock of its directory as long as it lives.
        if (directory.IsOpen() && ::flock(directory.Get(), LOCK_EX | LOCK_NB) == 0) {
            RemoveSite(entry.path());
        }
    }
}

void TSiteDirectory::Create() {
    std::string name = (target_.parent_path() / ("." + target_.filename().string())).string() +
                       std::string(workInfix) + std::string(workSuffix);
    if (::mkdtemp(name.data()) == nullptr) {
        FailWithError(target_, errno);
    }
    work_ = name;
    directory_ = TFileDescriptor(::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!directory_.IsOpen() || ::flock(directory_.Get(), LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        (void)::rmdir(name.c_str());
        FailWithError(target_, error);
    }
    Write(std::string(markerName), markerText);
}

void TSiteDirectory::MakeFolders(const std::string& path) {
    for (std::size_t end = path.find('/'); end != std::string::npos; end = path.find('/', end + 1)) {
        const std::string folder = path.substr(0, end);
        {
            const std::shared_lock lock(foldersMutex_);
            if (folders_.contains(folder)) {
                continue;
            }
        }
        if (::mkdirat(directory_.Get(), folder.c_str(), ACCESSPERMS) != 0 && errno != EEXIST) {
            FailWithError(target_ / folder, errno);
        }
        const std::unique_lock lock(foldersMutex_);
        folders_.insert(folder);
    }
}

void TSiteDirectory::Write(const std::string& path, std::string_view bytes) {
    const std::shared_lock lock(mutex_);
    if (isDiscarded_) {
        Fail(target_, "interrupted");
    }
    MakeFolders(path);
    constexpr mode_t mode = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    TFileDescriptor file(
        ::openat(directory_.Get(), path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (!file.IsOpen()) {
        FailWithError(target_ / path, errno);
    }
    WriteAll(file.Get(), bytes, target_ / path);
    if (::close(file.Release()) != 0) {
        FailWithError(target_ / path, errno);
    }
}

void TSiteDirectory::Publish() {
    if (::fchmod(directory_.Get(), GetDirectoryMode()) != 0) {
        FailWithError(target_, errno);
    }
    RequireReplaceable();
    const NVORHOST::TSignalGuard guard;
    std::error_code error;
    const bool replaces = fs::exists(fs::symlink_status(target_, error));
    const int failure =
        replaces ? Exchange(work_, target_) : (::rename(work_.c_str(), target_.c_str()) == 0 ? 0 : errno);
    if (failure != 0) {
        FailWithError(target_, failure);
    }
    if (!replaces) {
        work_.clear();
    }
}

void TSiteDirectory::Discard() {
    const std::unique_lock lock(mutex_);
    isDiscarded_ = true;
    if (!work_.empty()) {
        RemoveSite(work_);
        work_.clear();
    }
}

}  // namespace NFLEET
