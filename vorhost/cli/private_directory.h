// A directory of one run's own inside the target directory: the plug-in writes there, and only finished files
// are moved out. So a reader never sees half a file, and whatever happens to a run, an earlier inventory
// stays.
#pragma once

#include "vorhost/cli/interruption.h"

#include <optional>
#include <string>

namespace NVORHOST {

/// Made on construction (mode 0700), removed with all it holds on destruction, or by a signal that ends the
/// program. It is locked as long as its run lives; those that dead runs have left in the same target are
/// removed on construction.
class TPrivateDirectory {
  public:
    /// `failure` is what could not be done when the directory cannot be had, for people: "cannot write to x".
    /// Errors: TRunFailure with that and the cause.
    TPrivateDirectory(const std::string& target, const std::string& failure);
    ~TPrivateDirectory();
    TPrivateDirectory(const TPrivateDirectory&) = delete;
    TPrivateDirectory& operator=(const TPrivateDirectory&) = delete;

    /// Absolute, so that it stays right when the working directory changes.
    const std::string& GetPath() const { return path_; }

    /// Makes a finished file readable by its owner alone.
    void Protect(const std::string& fileName) const;
    /// Moves a finished file to the target under the same name, replacing what has that name there (a
    /// symbolic link itself, not what it leads to).
    void MoveOut(const std::string& fileName, const TUninterrupted& together);

    /// A colon and why nothing more can be written here, as the system puts it; empty when something can. The
    /// plug-in does not say what kept it from writing; a full disk still does.
    std::string DescribeObstacle() const;

  private:
    std::string PathOf(const std::string& fileName) const;
    std::string TargetOf(const std::string& fileName) const;
    void Make(const std::string& pattern, const std::string& failure);

    std::string target_;
    std::string path_;
    std::optional<TUnfinished> unfinished_;
    int lock_ = -1;  // descriptor of the directory, locked
};

}  // namespace NVORHOST
