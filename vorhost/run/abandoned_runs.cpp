#include "vorhost/run/abandoned_runs.h"

#include "vorhost/run/directory_entries.h"
#include "vorhost/run/removal.h"
#include "vorhost/run/run_journal.h"
#include "vorhost/run/run_name.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace NVORHOST {
namespace {

bool HasFile(int directory, const TMovedFile& file) {
    struct stat status {};
    return ::fstatat(directory, file.fileName.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISREG(status.st_mode) && TMovedFile::Make(file.fileName, status) == file;
}

// If a moved file has been replaced since, the target contains files of a later run. Nothing is moved then,
// since it would mix the documents of two runs.
std::vector<std::string> CompleteMoves(const TTargetDirectory& target, int directory,
                                       const std::vector<TMovedFile>& moves) {
    const int targetDescriptor = target.GetDescriptor();
    std::vector<std::string> remaining;
    for (const TMovedFile& move : moves) {
        if (HasFile(directory, move)) {
            remaining.push_back(move.fileName);
        } else if (!HasFile(targetDescriptor, move)) {
            return {};
        }
    }
    std::vector<std::string> moved;
    if (remaining.size() == moves.size()) {
        return moved;  // the run had not moved any file
    }
    for (const std::string& name : remaining) {
        if (::renameat(directory, name.c_str(), targetDescriptor, name.c_str()) == 0) {
            moved.push_back(name);
        }
    }
    if (!moved.empty()) {
        (void)::fsync(targetDescriptor);  // if this fails, a crash at worst repeats the moves
    }
    return moved;
}

// True if another process has locked the directory. On a file system without locks, only the name counts.
bool IsInUse(int directory) {
    return ::flock(directory, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

bool IsOurs(int directory, const std::string& name, uid_t owner) {
    struct stat status {};
    if (::fstat(directory, &status) != 0 || status.st_uid != owner || HoldsOtherFileSystem(directory)) {
        return false;
    }
    const auto entries = ListEntries(directory);
    if (entries && std::ranges::all_of(*entries, [](const auto& entry) { return entry == journalName; })) {
        return true;  // the run was killed while it created the directory, which contains no files to lose
    }
    const auto journal = ReadJournal(directory);
    return journal && journal->directoryName == name;
}

}  // namespace

std::vector<std::string> ListAbandoned(const TTargetDirectory& target) {
    auto names = ListEntries(target.GetDescriptor()).value_or(std::vector<std::string>());
    std::erase_if(names, [](const std::string& name) { return !IsAbandonedName(name); });
    return names;
}

std::vector<std::string> RemoveAbandoned(const TTargetDirectory& target,
                                         const std::vector<std::string>& names, uid_t owner,
                                         const TTargetLock& /*lock*/) {
    std::vector<std::string> moved;
    for (const std::string& name : names) {
        const TFileDescriptor directory = OpenSubdirectory(target.GetDescriptor(), name);
        if (!directory.IsOpen() || IsInUse(directory.Get()) || !IsOurs(directory.Get(), name, owner)) {
            continue;
        }
        if (const auto journal = ReadJournal(directory.Get())) {
            const auto completed = CompleteMoves(target, directory.Get(), journal->moves);
            moved.insert(moved.end(), completed.begin(), completed.end());
        }
        (void)RemovePrivateDirectory(target, name, directory.Get());
    }
    return moved;
}

bool RemovePrivateDirectory(const TTargetDirectory& target, const std::string& name, int directory) {
    return RemoveContents(directory, journalName) &&
           (::unlinkat(directory, journalName, 0) == 0 || errno == ENOENT) &&
           IsEntry(target.GetDescriptor(), name, directory) &&
           ::unlinkat(target.GetDescriptor(), name.c_str(), AT_REMOVEDIR) == 0;
}

bool IsEntry(int directory, const std::string& name, int descriptor) {
    struct stat entry {};
    struct stat opened {};
    return ::fstatat(directory, name.c_str(), &entry, AT_SYMLINK_NOFOLLOW) == 0 &&
           ::fstat(descriptor, &opened) == 0 && entry.st_dev == opened.st_dev &&
           entry.st_ino == opened.st_ino;
}

}  // namespace NVORHOST
