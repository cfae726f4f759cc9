// The work of a collecting process, from its fork to its end.
#pragma once

#include "machine/supervision/collection_task.h"
#include "machine/system/access_place.h"

namespace NVORHOST {

/// Detaches the process from the run, runs the collectors, and exits. `output` is the descriptor that the
/// messages are written to. The process gives up all other descriptors of the run, its terminal and its
/// working directory: "/" after a relative sysroot has been opened. Its standard streams are /dev/null.
/// noexcept: an escaping exception would unwind into frames of the run. If there is not even memory for the
/// `failed` message, the process terminates.
[[noreturn]] void CollectAndExit(const TCollectionTask& task, TAccessPlace& place, int output) noexcept;

}  // namespace NVORHOST
