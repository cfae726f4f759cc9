#include "vorhost/run/private_directory.h"

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
constexpr off_t probeBytes = 65536;  // more than any buffer of the plug-in holds back

[[noreturn]] void Fail(const std::string& failure, int error) {
    throw TRunFailure(failure + ": " + std::generic_category().message(error));
}

struct stat StatusOf(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        status = {};
    }
    return status;
}

// The plug-in may be at work in there, and quicker at making files than anybody is at removing them. It makes
// them in the working directory of the process: once that is a directory which is gone, no more can be made.
// It has to be gone before it is the working directory: in an empty one, the plug-in could be quicker.
void TakeWorkingDirectoryAway(int directory) {
    constexpr char nowhere[] = ".gone";
    (void)::mkdirat(directory, nowhere, S_IRWXU);
    const TFileDescriptor gone(::openat(directory, nowhere, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const bool isAway =
        gone.IsOpen() && ::unlinkat(directory, nowhere, AT_REMOVEDIR) == 0 && ::fchdir(gone.Get()) == 0;
    (void)isAway;  // no worse off than before if it is not
}

void RemoveInUse(const TTargetDirectory& target, const std::string& name, int directory) {
    constexpr int maxRemovals = 1000;
    constexpr std::chrono::milliseconds pause(1);
    TakeWorkingDirectoryAway(directory);
    for (int removal = 0; removal < maxRemovals; ++removal) {
        if (RemovePrivateDirectory(target, name, directory) || StatusOf(directory).st_nlink == 0) {
            return;
        }
        std::this_thread::sleep_for(pause);  // something was under way, which ends by itself
    }
    // What cannot be removed is left to the next run.
}

// Only a directory that this user has just made is empty and has the owner that new files of this user get,
// which a file server may decide. EEXIST, as for a name in use, when it is another one; else 0 or why it
// cannot be listed.
int CheckNewAndOwn(int directory, int journal) {
    if ((StatusOf(directory).st_mode & permissions) != S_IRWXU) {
        (void)::fchmod(directory, S_IRWXU);  // some file systems have no modes
    }
    const auto entries = ListEntries(directory);
    if (!entries) {
        return errno;
    }
    const bool isNewAndOwn = *entries == std::vector<std::string>{journalName} &&
                             StatusOf(directory).st_uid == StatusOf(journal).st_uid;
    return isNewAndOwn ? 0 : EEXIST;
}

// Another run takes it for abandoned, or somebody else has removed or replaced it.
bool IsLost(int error) {
    return error == EEXIST || error == ENOENT || error == EWOULDBLOCK;
}

// Some file systems have nothing to sync.
int Sync(int descriptor) {
    while (::fsync(descriptor) != 0) {
        if (errno != EINTR) {
            return errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP ? 0 : errno;
        }
    }
    return 0;
}

}  // namespace

TPrivateDirectory::TPrivateDirectory(const TTargetDirectory& target, const std::string& failure, bool syncs)
    : target_(target), syncs_(syncs) {
    bool isMade = false;
    for (int attempt = 0; attempt < maxAttempts && !isMade; ++attempt) {
        isMade = Make(failure);
    }
    if (!isMade) {
        throw TRunFailure(failure + ": the directory made for this run keeps being removed or replaced");
    }
    RemoveAbandonedRuns();
}

TPrivateDirectory::~TPrivateDirectory() {
    (void)RemovePrivateDirectory(target_, name_, GetDescriptor());  // what is left is removed by the next run
}

bool TPrivateDirectory::Make(const std::string& failure) {
    name_ = MakePrivateName();
    const TUninterrupted begun;
    if (::mkdirat(target_.GetDescriptor(), name_.c_str(), S_IRWXU) != 0) {
        Fail(failure, errno);
    }
    const int error = Open();
    if (error != 0) {
        // Nothing is removed that was not just made.
        (void)::unlinkat(target_.GetDescriptor(), name_.c_str(), AT_REMOVEDIR);
        if (!IsLost(error)) {
            Fail(failure, error);
        }
        return false;
    }
    unfinished_.emplace(begun, [&target = target_, name = name_, directory = GetDescriptor()] {
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
        return errno;  // without locks, the name has to do
    }
    int error = 0;
    journal_ = BeginJournal(GetDescriptor(), name_, error);
    if (error == 0) {
        error = CheckNewAndOwn(GetDescriptor(), journal_.Get());
    }
    if (error != 0 && journal_.IsOpen()) {
        (void)::unlinkat(GetDescriptor(), journalName, 0);
    }
    return error;
}

void TPrivateDirectory::RemoveAbandonedRuns() {
    const auto names = FindAbandoned(target_);
    if (!names.empty()) {
        CompleteOthers(TTargetLock(target_));
    }
}

void TPrivateDirectory::CompleteOthers(const TTargetLock& lock) {
    const auto names = FindAbandoned(target_);
    const auto moved = RemoveAbandoned(target_, names, StatusOf(journal_.Get()).st_uid, lock);
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
        error = Sync(file.Get());
    }
    if (error != 0) {
        Fail("cannot write to " + target_.PathOf(fileName), error);
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
    if (error == 0 && !RecordMoves(journal_.Get(), moves)) {
        error = errno;
    }
    for (const int descriptor : {journal_.Get(), GetDescriptor()}) {
        if (error == 0 && syncs_) {
            error = Sync(descriptor);
        }
    }
    if (error != 0) {
        Fail("cannot write to " + target_.PathOf(name_), error);
    }
}

void TPrivateDirectory::MoveOut(const TUninterrupted& /*together*/) {
    for (const TFinishedFile& finished : finished_) {
        MoveFile(finished);
    }
}

void TPrivateDirectory::MoveFile(const TFinishedFile& finished) const {
    const std::string failure = "cannot write to " + target_.PathOf(finished.name);
    const char* const name = finished.name.c_str();
    if (!IsEntry(GetDescriptor(), name, finished.file.Get())) {
        throw TRunFailure(failure + ": another file has replaced the one that was written");
    }
    if (::renameat(GetDescriptor(), name, target_.GetDescriptor(), name) != 0) {
        Fail(failure, errno);
    }
    // A later run may have replaced it already, which leaves it without a name.
    if (!IsEntry(target_.GetDescriptor(), name, finished.file.Get()) &&
        StatusOf(finished.file.Get()).st_nlink != 0) {
        throw TRunFailure(failure + ": another file is in its place");
    }
}

void TPrivateDirectory::SyncMoves() const {
    if (!syncs_ || finished_.empty()) {
        return;
    }
    int error = Sync(target_.GetDescriptor());
    if (error == EBADF) {
        // A directory that may not be read cannot be synced by itself; the whole file system can.
        error = ::syncfs(GetDescriptor()) == 0 ? 0 : errno;
    }
    if (error != 0) {
        Fail("cannot write to " + target_.PathOf(finished_.front().name), error);
    }
}

std::string TPrivateDirectory::DescribeObstacle() const {
    constexpr char probe[] = "probe";
    const TFileDescriptor file = OpenFile(probe, O_WRONLY | O_CREAT);
    const int error = file.IsOpen() ? ::posix_fallocate(file.Get(), 0, probeBytes) : errno;
    (void)::unlinkat(GetDescriptor(), probe, 0);
    return error == 0 ? "" : ": " + std::generic_category().message(error);
}

}  // namespace NVORHOST
