#include "vorhost/run/private_directory.h"

#include "os/file_sync.h"
#include "vorhost/run/abandoned_runs.h"
#include "vorhost/run/directory_entries.h"
#include "vorhost/run/run_failure.h"
#include "vorhost/run/run_journal.h"
#include "vorhost/run/run_name.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace NVORHOST {
namespace {

constexpr int maxAttempts = 32;
constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;
constexpr mode_t permissions = S_IRWXU | S_IRWXG | S_IRWXO;
constexpr off_t probeBytes = 65536;  // more than any output buffer of the plug-in

[[noreturn]] void Fail(const std::string& failure, int error) {
    throw TRunFailure(failure + ": " + std::generic_category().message(error));
}

// Returns zeros if the status cannot be read.
struct stat GetStatus(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        status = {};
    }
    return status;
}

// A plug-in thread may create files faster than they are removed. Changes into a directory that has already
// been removed: nothing can be created there. The order matters: between fchdir and a later removal, the
// plug-in could create a file, and the removal would fail.
void ChdirToRemovedDirectory(int directory) {
    constexpr char name[] = ".gone";
    (void)::mkdirat(directory, name, S_IRWXU);
    const TFileDescriptor removed(::openat(directory, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const bool isChanged =
        removed.IsOpen() && ::unlinkat(directory, name, AT_REMOVEDIR) == 0 && ::fchdir(removed.Get()) == 0;
    (void)isChanged;  // on failure, the removal is still attempted
}

void RemoveInUse(const TTargetDirectory& target, const std::string& name, int directory) {
    constexpr int maxRemovals = 1000;
    constexpr std::chrono::milliseconds pause(1);
    ChdirToRemovedDirectory(directory);
    for (int removal = 0; removal < maxRemovals; ++removal) {
        if (RemovePrivateDirectory(target, name, directory) || GetStatus(directory).st_nlink == 0) {
            return;
        }
        std::this_thread::sleep_for(pause);  // a call of the plug-in that had begun will complete soon
    }
    // The next run removes the rest.
}

// A directory that this user has just created contains only the journal and has the same owner as the
// journal. The owner need not be the effective user: a file server may map users. Returns 0; EEXIST for
// another directory of this name; or the errno of listing it.
int CheckNewAndOwn(int directory, int journal) {
    if ((GetStatus(directory).st_mode & permissions) != S_IRWXU) {
        (void)::fchmod(directory, S_IRWXU);  // some file systems have no modes
    }
    const auto entries = ListEntries(directory);
    if (!entries) {
        return errno;
    }
    const bool isNewAndOwn = *entries == std::vector<std::string>{journalName} &&
                             GetStatus(directory).st_uid == GetStatus(journal).st_uid;
    return isNewAndOwn ? 0 : EEXIST;
}

// True if another run considers the directory abandoned, or it was removed or replaced.
bool IsLost(int error) {
    return error == EEXIST || error == ENOENT || error == EWOULDBLOCK;
}

}  // namespace

TPrivateDirectory::TPrivateDirectory(const TTargetDirectory& target, const std::string& failure, bool syncs)
    : target_(target), syncs_(syncs) {
    bool isCreated = false;
    for (int attempt = 0; attempt < maxAttempts && !isCreated; ++attempt) {
        isCreated = Create(failure);
    }
    if (!isCreated) {
        throw TRunFailure(failure + ": the directory created for this run keeps being removed or replaced");
    }
    RemoveAbandonedRuns();
}

TPrivateDirectory::~TPrivateDirectory() {
    (void)RemovePrivateDirectory(target_, name_, GetDescriptor());  // the next run removes the rest
}

bool TPrivateDirectory::Create(const std::string& failure) {
    name_ = MakePrivateName();
    const TSignalGuard guard;
    if (::mkdirat(target_.GetDescriptor(), name_.c_str(), S_IRWXU) != 0) {
        Fail(failure, errno);
    }
    const int error = Open();
    if (error != 0) {
        // AT_REMOVEDIR removes only an empty directory.
        (void)::unlinkat(target_.GetDescriptor(), name_.c_str(), AT_REMOVEDIR);
        if (!IsLost(error)) {
            Fail(failure, error);
        }
        return false;
    }
    cleanup_.emplace(guard, [&target = target_, name = name_, directory = GetDescriptor()] {
        RemoveInUse(target, name, directory);
    });
    return true;
}

int TPrivateDirectory::Open() {
    directory_ = TFileDescriptor(
        ::openat(target_.GetDescriptor(), name_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!directory_.IsOpen()) {
        return errno;
    }
    if (::flock(GetDescriptor(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return errno;  // other errors: without locks, other runs recognise the owner by the name
    }
    int error = 0;
    journal_ = CreateJournal(GetDescriptor(), name_, error);
    if (error == 0) {
        error = CheckNewAndOwn(GetDescriptor(), journal_.Get());
    }
    if (error != 0 && journal_.IsOpen()) {
        (void)::unlinkat(GetDescriptor(), journalName, 0);
    }
    return error;
}

void TPrivateDirectory::RemoveAbandonedRuns() {
    const auto names = ListAbandoned(target_);
    if (!names.empty()) {
        CompleteOthers(TTargetLock(target_));
    }
}

void TPrivateDirectory::CompleteOthers(const TTargetLock& lock) {
    const auto names = ListAbandoned(target_);
    const auto moved = RemoveAbandoned(target_, names, GetStatus(journal_.Get()).st_uid, lock);
    completed_.insert(completed_.end(), moved.begin(), moved.end());
    std::ranges::sort(completed_);
}

TFileDescriptor TPrivateDirectory::OpenFile(const std::string& fileName, int flags) const {
    return TFileDescriptor(
        ::openat(GetDescriptor(), fileName.c_str(), flags | O_NOFOLLOW | O_CLOEXEC, ownerOnly));
}

void TPrivateDirectory::Finish(const std::string& fileName, TFileDescriptor file) {
    int error = ::fchmod(file.Get(), ownerOnly) == 0 ? 0 : errno;
    if (error == 0 && syncs_) {
        error = SyncFile(file.Get());
    }
    if (error != 0) {
        Fail("cannot write to " + target_.GetPath(fileName), error);
    }
    finished_.push_back({fileName, std::move(file)});
}

void TPrivateDirectory::PrepareMoves() {
    if (finished_.size() < 2) {
        return;
    }
    int error = 0;
    std::vector<TMovedFile> moves;
    for (const TFinishedFile& finished : finished_) {
        struct stat status {};
        error = ::fstat(finished.file.Get(), &status) == 0 ? error : errno;
        moves.push_back(TMovedFile::Make(finished.name, status));
    }
    if (error == 0 && !WriteMoves(journal_.Get(), moves)) {
        error = errno;
    }
    for (const int descriptor : {journal_.Get(), GetDescriptor()}) {
        if (error == 0 && syncs_) {
            error = SyncFile(descriptor);
        }
    }
    if (error != 0) {
        Fail("cannot write to " + target_.GetPath(name_), error);
    }
}

void TPrivateDirectory::MoveOut(const TSignalGuard& /*guard*/) {
    for (const TFinishedFile& finished : finished_) {
        MoveFile(finished);
    }
}

void TPrivateDirectory::MoveFile(const TFinishedFile& finished) const {
    const std::string failure = "cannot write to " + target_.GetPath(finished.name);
    const char* const name = finished.name.c_str();
    if (!IsEntry(GetDescriptor(), name, finished.file.Get())) {
        throw TRunFailure(failure + ": the written file was replaced by another one");
    }
    if (::renameat(GetDescriptor(), name, target_.GetDescriptor(), name) != 0) {
        Fail(failure, errno);
    }
    // A later run may already have replaced the file; its link count is then 0.
    if (!IsEntry(target_.GetDescriptor(), name, finished.file.Get()) &&
        GetStatus(finished.file.Get()).st_nlink != 0) {
        throw TRunFailure(failure + ": another file took its place");
    }
}

void TPrivateDirectory::SyncMoves() const {
    if (!syncs_ || finished_.empty()) {
        return;
    }
    int error = SyncFile(target_.GetDescriptor());
    if (error == EBADF) {
        // A directory without read permission is open with O_PATH and cannot be synced; the file system can.
        error = ::syncfs(GetDescriptor()) == 0 ? 0 : errno;
    }
    if (error != 0) {
        Fail("cannot write to " + target_.GetPath(finished_.front().name), error);
    }
}

int TPrivateDirectory::ProbeWriting() const {
    constexpr char probe[] = "probe";
    const TFileDescriptor file = OpenFile(probe, O_WRONLY | O_CREAT);
    const int error = file.IsOpen() ? ::posix_fallocate(file.Get(), 0, probeBytes) : errno;
    (void)::unlinkat(GetDescriptor(), probe, 0);
    return error;
}

std::string DescribeWriteFailure(const TPrivateDirectory& directory) {
    const int error = directory.ProbeWriting();
    return error == 0 ? "" : ": " + std::generic_category().message(error);
}

}  // namespace NVORHOST
