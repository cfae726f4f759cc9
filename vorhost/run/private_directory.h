// A directory of one run's own inside the target directory: the plug-in writes there, and only finished files
// are moved out. So a reader never sees half a file, and however a run ends, an earlier inventory stays. Both
// directories are used by descriptor alone: exchanging their paths redirects nothing.
#pragma once

#include "os/file_descriptor.h"
#include "vorhost/run/interruption.h"
#include "vorhost/run/target_directory.h"

#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

/// Made on construction (mode 0700), removed with all it holds on destruction, or by a signal that ends the
/// program. Directories that runs killed on this host have left in the same target are removed on
/// construction.
class TPrivateDirectory {
  public:
    /// `target` must outlive this object; `failure` is what could not be done when the directory cannot be
    /// had, for people: "cannot write to x". Without `syncs`, files are moved before they are on the disk.
    /// Errors: TRunFailure with `failure` and the cause.
    TPrivateDirectory(const TTargetDirectory& target, const std::string& failure, bool syncs);
    ~TPrivateDirectory();
    TPrivateDirectory(const TPrivateDirectory&) = delete;
    TPrivateDirectory& operator=(const TPrivateDirectory&) = delete;

    int GetDescriptor() const { return directory_.Get(); }

    /// Opens a file with `flags` as of open(2); a link is not followed. A new file is readable by its owner
    /// alone. Errors: not open, with errno.
    TFileDescriptor OpenFile(const std::string& fileName, int flags) const;

    /// Takes over a file that is written: makes it readable by its owner alone and puts it on the disk.
    void Finish(const std::string& fileName, TFileDescriptor file);
    /// Notes the finished files in the journal, so that all of them or none are moved out, even if the run is
    /// killed. To be called once, before the lock on the target is taken.
    void PrepareMoves();
    /// Completes what runs killed meanwhile have begun: files of this run are not to meet the rest of theirs.
    void CompleteOthers(const TTargetLock& lock);
    /// Moves the finished files to the target under the same names, replacing what has these names there (a
    /// symbolic link itself, not the file that it refers to).
    void MoveOut(const TUninterrupted& together);
    /// Puts the moves on the disk.
    void SyncMoves() const;

    /// The files of killed runs whose move was completed, sorted.
    const std::vector<std::string>& GetCompleted() const { return completed_; }

    /// A colon and why nothing more can be written here, as the system puts it; empty when something can. The
    /// plug-in does not report what kept it from writing; a full disk still does.
    std::string DescribeObstacle() const;

  private:
    struct TFinishedFile {
        std::string name;
        TFileDescriptor file;
    };

    bool Make(const std::string& failure);
    int Open();
    void RemoveAbandonedRuns();
    void MoveFile(const TFinishedFile& finished) const;

    const TTargetDirectory& target_;
    bool syncs_;
    std::string name_;
    TFileDescriptor directory_;  // locked
    TFileDescriptor journal_;
    std::optional<TUnfinished> unfinished_;
    std::vector<TFinishedFile> finished_;
    std::vector<std::string> completed_;
};

}  // namespace NVORHOST
