// The machine that a run collects from: the running one, or a tree that was captured from one.
#pragma once

#include "machine/replay/replay_files.h"
#include "machine/replay/replay_system_calls.h"
#include "machine/supervision/machine_options.h"
#include "machine/system/live_system_calls.h"
#include "machine/system/rooted_files.h"
#include "machine/system/sleep_guard.h"

#include <optional>
#include <string>

namespace NVORHOST {

/// Throws TRunFailure if /proc is not mounted. Files are opened, and the plug-in is found, through /proc of
/// the running system.
void RequireProcFileSystem();

/// True for the running machine, false for a captured tree.
bool IsLiveMachine(const TMachineOptions& options);
/// True if the directory is the root of a machine, running or captured, by what it contains.
bool IsMachineRoot(const std::string& directory);
/// Describes the machine for people: "this machine", "tree /x".
std::string DescribeMachine(const TMachineOptions& options);

/// Keeps the devices of the machine asleep, unless the options allow to wake them. A tree without the answers
/// of a capture counts as a machine too: the file systems of the host are often mounted in a container. The
/// files of a capture are read all the same, because they wake nothing.
class TMachineDoor {
  public:
    /// Errors: throws TRunFailure if the tree is missing, is not readable, or is not the tree of a machine.
    explicit TMachineDoor(const TMachineOptions& options);

    const ISystemFiles& GetFiles() const;
    const ISystemCalls& GetCalls() const;
    /// The time of the collection: the one that the options give; otherwise the clock, or for a tree the
    /// recorded time of its capture. Absent for a tree without a recorded time.
    std::optional<NKELVOR20::TCIMDateTime> FindLocalTime() const;

  private:
    const ISystemFiles& GetRootedFiles() const;

    bool isLive_;
    std::optional<NKELVOR20::TCIMDateTime> localTime_;
    TRootedFiles rootedFiles_;
    TSleepGuard guardedFiles_;
    bool isGuarded_;
    TLiveSystemCalls liveCalls_;
    std::optional<TReplaySystemCalls> capturedCalls_;  // only for trees
    std::optional<TReplayFiles> capturedFiles_;        // only for trees
};

}  // namespace NVORHOST
