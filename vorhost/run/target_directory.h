// The directory that receives a run's files, held open by descriptor, so that nobody who may rename entries
// on the way to it can redirect a run that is under way.
#pragma once

#include "os/file_descriptor.h"

#include <string>
#include <utility>

namespace NVORHOST {

/// Opens a directory, following links: for reading where that is permitted, else for access by name only.
/// `at` is a descriptor that relative paths start from, or AT_FDCWD. Errors: not open, with errno.
TFileDescriptor OpenDirectory(int at, const std::string& path);

class TTargetDirectory {
  public:
    /// An empty path is the working directory. Errors: throws TRunFailure with `failure` and the cause.
    TTargetDirectory(const std::string& path, const std::string& failure);
    /// Takes a directory that is open already; `path` is its name in messages.
    TTargetDirectory(TFileDescriptor directory, std::string path)
        : directory_(std::move(directory)), path_(std::move(path)) {}

    int GetDescriptor() const { return directory_.Get(); }
    /// Joins the path of the directory and a file name, for messages.
    std::string PathOf(const std::string& fileName) const;

    /// Throws TRunFailure with `failure` and the cause unless files can be created here.
    void RequireWritable(const std::string& failure) const;

  private:
    TFileDescriptor directory_;
    std::string path_;
};

/// Keeps other runs of this machine from moving files into the same directory. Best effort: where the file
/// system has no locks, or somebody else holds the lock for more than ten seconds, the owner goes on without
/// it.
class TTargetLock {
  public:
    explicit TTargetLock(const TTargetDirectory& target);
    ~TTargetLock();
    TTargetLock(const TTargetLock&) = delete;
    TTargetLock& operator=(const TTargetLock&) = delete;

  private:
    int descriptor_;  // not owned
};

}  // namespace NVORHOST
