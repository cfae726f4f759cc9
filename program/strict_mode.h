// The option --strict.
#pragma once

#include "machine/supervision/collect_outcome.h"
#include "vorhost/run/exit_status.h"

namespace NVORHOST {

/// The exit status of a run that is done: `eExitGaps` in strict mode if the collection has gaps.
inline EExitStatus GetExitStatus(const TCollectOutcome& outcome, bool isStrict) {
    return isStrict && outcome.HasGaps() ? eExitGaps : eExitDone;
}

}  // namespace NVORHOST
