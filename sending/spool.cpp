#include "sending/spool.h"

#include "text/ascii.h"
#include "text/numbers.h"
#include "vorhost/run/directory_entries.h"
#include "vorhost/run/private_directory.h"
#include "vorhost/run/run_failure.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

namespace NVORHOST {
namespace {

constexpr char recordName[] = "run";
constexpr char lockName[] = "lock";
constexpr char stagedName[] = "staged";
constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;
constexpr std::size_t sequenceDigits = 8;

[[noreturn]] void Fail(const std::string& failure, int error) {
    throw TRunFailure(failure + ": " + std::generic_category().message(error));
}

// File systems that do not support fsync are not an error.
void Sync(int descriptor, const std::string& path) {
    while (::fsync(descriptor) != 0) {
        if (errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP) {
            return;
        }
        if (errno != EINTR) {
            Fail("cannot write to " + path, errno);
        }
    }
}

void CreateWithParents(const std::string& path) {
    std::filesystem::path made;
    for (const auto& name : std::filesystem::path(path)) {
        made /= name;
        if (::mkdir(made.c_str(), S_IRWXU) != 0 && errno != EEXIST && errno != EACCES && errno != EROFS) {
            return;  // opening it reports the cause
        }
    }
}

TTargetDirectory OpenOwn(const std::string& path) {
    const std::string failure = "cannot use the spool " + path;
    CreateWithParents(path);
    TTargetDirectory directory(path, failure);
    struct stat status {};
    if (::fstat(directory.GetDescriptor(), &status) != 0) {
        Fail(failure, errno);
    }
    if (status.st_uid != ::geteuid()) {
        throw TRunFailure(failure + ": it belongs to another user");
    }
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        throw TRunFailure(failure + ": other users can write to it");
    }
    directory.RequireWritable(failure);
    return directory;
}

// Returns the number of a run; nullopt for any other name in a spool.
std::optional<std::uint64_t> ParseSequence(std::string_view name) {
    const bool isNumber = name.size() >= sequenceDigits && std::ranges::all_of(name, IsDigit);
    return isNumber ? ParseNumber<std::uint64_t>(name) : std::nullopt;
}

std::string FormatSequence(std::uint64_t number) {
    std::string digits = std::to_string(number);
    return digits.size() < sequenceDigits ? std::string(sequenceDigits - digits.size(), '0') + digits
                                          : digits;
}

bool IsDocumentName(std::string_view name) {
    return !name.empty() && name.front() != '.' && name != recordName &&
           std::ranges::all_of(name,
                               [](char c) { return IsAlphanumeric(c) || c == '-' || c == '_' || c == '.'; });
}

void WriteAll(int file, std::string_view bytes, const std::string& path) {
    while (!bytes.empty()) {
        const auto count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            Fail("cannot write to " + path, errno);
        }
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

void WriteFile(int directory, const std::string& name, std::string_view bytes, bool syncs,
               const std::string& path) {
    const TFileDescriptor file(
        ::openat(directory, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownerOnly));
    if (!file.IsOpen()) {
        Fail("cannot write to " + path, errno);
    }
    WriteAll(file.Get(), bytes, path);
    if (syncs) {
        Sync(file.Get(), path);
    }
}

TFileDescriptor OpenToRead(int directory, const std::string& name) {
    return TFileDescriptor(::openat(directory, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
}

// Returns nullopt with errno if the file cannot be read.
std::optional<std::string> ReadFile(int directory, const std::string& name) {
    const TFileDescriptor file = OpenToRead(directory, name);
    if (!file.IsOpen()) {
        return std::nullopt;
    }
    std::string bytes;
    std::array<char, 65536> part{};
    for (;;) {
        const auto count = ::read(file.Get(), part.data(), part.size());
        if (count == 0) {
            return bytes;
        }
        if (count < 0 && errno != EINTR) {
            return std::nullopt;
        }
        bytes.append(part.data(), count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

// The regular files of a run apart from its record.
std::vector<TWaitingFile> ListDocuments(int directory) {
    std::vector<TWaitingFile> files;
    for (const std::string& name : ListEntries(directory).value_or(std::vector<std::string>())) {
        struct stat status {};
        if (IsDocumentName(name) && ::fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode)) {
            files.push_back({name, static_cast<std::uintmax_t>(status.st_size)});
        }
    }
    std::ranges::sort(files, {}, &TWaitingFile::name);
    return files;
}

std::uintmax_t SizeOf(const TWaitingRun& run) {
    std::uintmax_t bytes = 0;
    for (const TWaitingFile& file : run.files) {
        bytes += file.sizeBytes;
    }
    return bytes;
}

}  // namespace

TSpool::TSpool(const std::string& path) : path_(path), directory_(OpenOwn(path)) {}

void TSpool::Add(const TRunRecord& record, const std::vector<TOutgoingFile>& files, bool syncs) {
    const std::string failure = "cannot write to the spool " + path_;
    const TPrivateDirectory workplace(directory_, failure, syncs);
    if (::mkdirat(workplace.GetDescriptor(), stagedName, S_IRWXU) != 0) {
        Fail(failure, errno);
    }
    const TFileDescriptor staged(
        ::openat(workplace.GetDescriptor(), stagedName, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!staged.IsOpen()) {
        Fail(failure, errno);
    }
    WriteFile(staged.Get(), recordName, FormatRunRecord(record), syncs, path_);
    for (const TOutgoingFile& file : files) {
        WriteFile(staged.Get(), file.name, file.bytes, syncs, path_);
    }
    if (syncs) {
        Sync(staged.Get(), path_);
    }
    Publish(workplace.GetDescriptor(), syncs);
}

// Another process may take the same number; the rename then fails, and the next number is tried.
void TSpool::Publish(int workplace, bool syncs) {
    for (;;) {
        const auto names = ListNames();
        const std::uint64_t last = names.empty() ? 0 : ParseSequence(names.back()).value_or(0);
        if (::renameat2(workplace, stagedName, directory_.GetDescriptor(), FormatSequence(last + 1).c_str(),
                        RENAME_NOREPLACE) == 0) {
            break;
        }
        if (errno != EEXIST) {
            Fail("cannot write to the spool " + path_, errno);
        }
    }
    if (syncs) {
        Sync(directory_.GetDescriptor(), path_);
    }
}

// Returns the names of the runs, the oldest first.
std::vector<std::string> TSpool::ListNames() const {
    auto names = ListEntries(directory_.GetDescriptor());
    if (!names) {
        Fail("cannot read the spool " + path_, errno);
    }
    std::erase_if(*names, [](const std::string& name) { return !ParseSequence(name); });
    std::ranges::sort(*names, {}, [](const std::string& name) { return ParseSequence(name); });
    return std::move(*names);
}

TFileDescriptor TSpool::OpenRun(const std::string& name) const {
    return TFileDescriptor(
        ::openat(directory_.GetDescriptor(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

TSpoolContents TSpool::List() const {
    TSpoolContents contents;
    for (const std::string& name : ListNames()) {
        const TFileDescriptor directory = OpenRun(name);
        auto files = directory.IsOpen() ? ListDocuments(directory.Get()) : std::vector<TWaitingFile>();
        if (files.empty()) {
            continue;
        }
        const auto text = ReadFile(directory.Get(), recordName);
        if (auto record = text ? ParseRunRecord(*text) : std::nullopt) {
            contents.runs.push_back({name, std::move(*record), std::move(files)});
        } else {
            contents.unreadable.push_back(name);
        }
    }
    return contents;
}

std::optional<std::string> TSpool::Read(const TWaitingRun& run, const std::string& fileName) const {
    const TFileDescriptor directory = OpenRun(run.name);
    auto bytes = directory.IsOpen() ? ReadFile(directory.Get(), fileName) : std::nullopt;
    if (!bytes && errno != ENOENT) {
        Fail("cannot read " + path_ + "/" + run.name + "/" + fileName, errno);
    }
    return bytes;
}

void TSpool::Remove(const TWaitingRun& run, const std::string& fileName) {
    const TFileDescriptor directory = OpenRun(run.name);
    if (directory.IsOpen() && ::unlinkat(directory.Get(), fileName.c_str(), 0) != 0 && errno != ENOENT) {
        Fail("cannot remove " + path_ + "/" + run.name + "/" + fileName, errno);
    }
}

// A process that was killed in here leaves a directory with or without a record.
void TSpool::RemoveEmptyRuns() {
    for (const std::string& name : ListNames()) {
        const TFileDescriptor directory = OpenRun(name);
        if (directory.IsOpen() && ListDocuments(directory.Get()).empty()) {
            (void)::unlinkat(directory.Get(), recordName, 0);
            (void)::unlinkat(directory_.GetDescriptor(), name.c_str(), AT_REMOVEDIR);  // fails if not empty
        }
    }
    Sync(directory_.GetDescriptor(), path_);
}

std::size_t TSpool::Trim(std::uintmax_t limitBytes) {
    const auto runs = List().runs;
    std::uintmax_t total = 0;
    for (const TWaitingRun& run : runs) {
        total += SizeOf(run);
    }
    std::size_t removed = 0;
    for (; total > limitBytes; ++removed) {
        const TWaitingRun& oldest = runs.at(removed);
        total -= SizeOf(oldest);
        for (const TWaitingFile& file : oldest.files) {
            Remove(oldest, file.name);
        }
    }
    RemoveEmptyRuns();
    return removed;
}

TSpoolLock::TSpoolLock(const TSpool& spool, std::chrono::milliseconds limit)
    : file_(::openat(spool.directory_.GetDescriptor(), lockName, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC,
                     ownerOnly)) {
    if (!file_.IsOpen()) {
        Fail("cannot write to the spool " + spool.path_, errno);
    }
    constexpr std::chrono::milliseconds pause(20);
    const auto end = std::chrono::steady_clock::now() + limit;
    while (::flock(file_.Get(), LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR)) {
        if (std::chrono::steady_clock::now() >= end) {
            file_.Close();
            return;
        }
        std::this_thread::sleep_for(pause);
    }
}

}  // namespace NVORHOST
