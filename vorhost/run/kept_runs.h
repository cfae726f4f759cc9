// Keeps the files of each run in a directory of its own, and the directories of the last runs only.
#pragma once

#include "host/cim_date_time.h"
#include "vorhost/run/private_directory.h"
#include "vorhost/run/target_directory.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// A time in UTC, to the millisecond.
using TRunTime = std::chrono::sys_time<std::chrono::milliseconds>;

/// Returns the point in time that a CIM date-time with an offset denotes.
TRunTime ToRunTime(const NKELVOR20::TCIMDateTime& time);

/// Returns the name of a run's directory: "20240229T124500.000Z". Names sort by time.
std::string MakeRunName(TRunTime time);

/// True for a name as MakeRunName returns it.
bool IsRunName(std::string_view name);

/// The directory of a run that is not finished. It is inside a private directory of the parent, and one
/// rename moves it into the parent, so that the directory of a run appears with all of its files or not at
/// all.
class TKeptRun {
  public:
    /// `parent` must outlive this object. With `syncs`, the directory is synced before it is moved.
    /// Errors: throws TRunFailure with `failure` ("cannot write to x") and the cause.
    TKeptRun(const TTargetDirectory& parent, const std::string& failure, bool syncs);

    /// The directory that receives the files. In messages it has the path of the parent.
    const TTargetDirectory& GetTarget() const { return run_; }
    /// See TPrivateDirectory::GetCompleted: the files are in the parent.
    const std::vector<std::string>& GetCompleted() const { return workplace_.GetCompleted(); }

    /// Moves the directory into the parent under the name for `time`, or for the next millisecond whose name
    /// is free, and returns the name. Then removes all but the last `count` runs of this user from the
    /// parent. This run is never removed. Runs dated later than this one, by a clock that was wrong, are
    /// removed first. Failures to remove are ignored: the next run tries again. Call once, when all files are
    /// in place. Errors: throws TRunFailure; nothing has changed then.
    std::string MoveIntoPlace(TRunTime time, std::size_t count);

  private:
    void SyncFiles() const;
    std::string Rename(TRunTime time) const;
    void RemoveOthers(const std::string& own, std::size_t count) const;
    std::vector<std::string> ListOthers(const std::string& own) const;
    bool IsRemovable(const std::string& name) const;

    const TTargetDirectory& parent_;
    std::string failure_;
    bool syncs_;
    TPrivateDirectory workplace_;
    TTargetDirectory run_;
};

}  // namespace NVORHOST
