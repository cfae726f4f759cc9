// The directory that receives the files of a run. It stays open for the whole run, so that renaming a
// directory in its path does not redirect the run.
#pragma once

#include "os/file_descriptor.h"

#include <string>
#include <utility>

namespace NVORHOST {

/// Opens a directory for reading, or with O_PATH if reading is not permitted. Follows symbolic links. A
/// relative path starts at the descriptor `at`, or at the working directory for AT_FDCWD. "" is `at` itself.
/// Errors: not open, with errno.
TFileDescriptor OpenDirectory(int at, const std::string& path);

class TTargetDirectory {
  public:
    /// An empty path is the working directory. Errors: throws TRunFailure with `failure` and the cause.
    TTargetDirectory(const std::string& path, const std::string& failure);
    /// Takes ownership of an open directory; `path` is its name in messages.
    TTargetDirectory(TFileDescriptor directory, std::string path)
        : directory_(std::move(directory)), path_(std::move(path)) {}

    int GetDescriptor() const { return directory_.Get(); }
    /// Joins the path of the directory and a file name, for messages.
    std::string GetPath(const std::string& fileName) const;

    /// Throws TRunFailure with `failure` and the cause if files cannot be created in the directory.
    void RequireWritable(const std::string& failure) const;

  private:
    TFileDescriptor directory_;
    std::string path_;
};

/// Locks the directory against moves of other runs on this machine. Best effort: the run continues without
/// the lock if the file system does not support locks, or another process keeps it for more than 10 seconds.
class TTargetLock {
  public:
    explicit TTargetLock(const TTargetDirectory& target);
    ~TTargetLock();
    TTargetLock(const TTargetLock&) = delete;
    TTargetLock& operator=(const TTargetLock&) = delete;

  private:
    int descriptor_;  // non-owning
};

}  // namespace NVORHOST
