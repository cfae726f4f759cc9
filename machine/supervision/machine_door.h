// The machine that a run looks at: the running one, or a tree that stands for one.
#pragma once

#include "machine/replay/captured_files.h"
#include "machine/replay/captured_system_calls.h"
#include "machine/supervision/machine_options.h"
#include "machine/system/live_system_calls.h"
#include "machine/system/rooted_files.h"

#include <optional>
#include <string>

namespace NVORHOST {

/// Files are opened, and the program finds its plug-in, through /proc of the running system. Throws
/// TRunFailure where it is missing.
void RequireProcFileSystem();

/// True for the running machine, false for a tree.
bool IsLiveMachine(const TMachineOptions& options);
/// The machine that the options name, for people: "this machine", "tree /x".
std::string DescribeMachine(const TMachineOptions& options);

class TMachineDoor {
  public:
    /// Throws TRunFailure when the tree is not there or cannot be read at all.
    explicit TMachineDoor(const TMachineOptions& options);

    const ISystemFiles& GetFiles() const;
    const ISystemCalls& GetCalls() const;
    /// The moment of the collection: what the user says, else the clock, else when the tree was captured.
    /// Absent for a tree that does not tell.
    std::optional<NKELVOR20::TCIMDateTime> GetLocalTime() const;

  private:
    bool isLive_;
    std::optional<NKELVOR20::TCIMDateTime> localTime_;
    TRootedFiles rootedFiles_;
    TLiveSystemCalls liveCalls_;
    std::optional<TCapturedSystemCalls> capturedCalls_;  // of trees
    std::optional<TCapturedFiles> capturedFiles_;        // of trees
};

}  // namespace NVORHOST
