// A private directory of one run inside the target directory. The plug-in writes to it, and only finished
// files are moved into the target, so that readers never see a partial file and a failed run leaves earlier
// files untouched. All calls use descriptors of the two directories, so renaming a directory does not
// redirect them.
#pragma once

#include "os/file_descriptor.h"
#include "vorhost/run/interruption.h"
#include "vorhost/run/target_directory.h"

#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

/// Created on construction with mode 0700; removed with its contents on destruction or when a signal ends the
/// program. Construction also removes the directories of runs that were killed on this host.
class TPrivateDirectory {
  public:
    /// `target` must outlive this object. With `syncs`, files are synced to disk before they are moved.
    /// Errors: throws TRunFailure with `failure` ("cannot write to x") and the cause.
    TPrivateDirectory(const TTargetDirectory& target, const std::string& failure, bool syncs);
    ~TPrivateDirectory();
    TPrivateDirectory(const TPrivateDirectory&) = delete;
    TPrivateDirectory& operator=(const TPrivateDirectory&) = delete;

    int GetDescriptor() const { return directory_.Get(); }

    /// Opens a file with the `flags` of open(2); a symbolic link is not followed. A new file gets mode 0600.
    /// Errors: not open, with errno.
    TFileDescriptor OpenFile(const std::string& fileName, int flags) const;

    /// Takes ownership of a completely written file: sets mode 0600 and syncs it. Errors: throws TRunFailure.
    void Finish(const std::string& fileName, TFileDescriptor file);
    /// Records the finished files in the journal. If the run is then killed between two moves, the next run
    /// completes them. Call once, before the target is locked.
    /// Errors: throws TRunFailure.
    void PrepareMoves();
    /// Completes the moves of runs that have been killed since construction, so that their files do not
    /// replace files of this run later.
    void CompleteOthers(const TTargetLock& lock);
    /// Moves the finished files to the target under the same names. Existing entries are replaced; a symbolic
    /// link is replaced itself, not the file that it refers to.
    /// Errors: throws TRunFailure.
    void MoveOut(const TSignalGuard& guard);
    /// Syncs the moves to disk. Errors: throws TRunFailure.
    void SyncMoves() const;

    /// The names of the files of killed runs whose move was completed, sorted.
    const std::vector<std::string>& GetCompleted() const { return completed_; }

    /// Tries to write a file. Returns 0, or the errno of the failure. A plug-in does not report why it could
    /// not write; the cause, such as a full disk, usually still exists after the request.
    int ProbeWriting() const;

  private:
    struct TFinishedFile {
        std::string name;
        TFileDescriptor file;
    };

    bool Create(const std::string& failure);
    int Open();
    void RemoveAbandonedRuns();
    void MoveFile(const TFinishedFile& finished) const;

    const TTargetDirectory& target_;
    bool syncs_;
    std::string name_;
    TFileDescriptor directory_;  // locked
    TFileDescriptor journal_;
    std::optional<TPendingCleanup> cleanup_;
    std::vector<TFinishedFile> finished_;
    std::vector<std::string> completed_;
};

/// Describes why nothing can be written to the directory: ": No space left on device"; "" if writing
/// succeeds. Appended to messages.
std::string DescribeWriteFailure(const TPrivateDirectory& directory);

}  // namespace NVORHOST
