// What an inventory lacks because a source or a collector of it failed, and what may be wrong in it.
#pragma once

#include "vorhost/run/exit_status.h"

#include <cstddef>
#include <string>
#include <vector>

namespace NVORHOST {

/// Every list of sources is sorted and without duplicates.
struct TSourceGaps {
    std::size_t failedCollectors = 0;          ///< each is in the log
    std::vector<std::string> deniedSources;    ///< files that this user may not read
    std::vector<std::string> failedSources;    ///< those that cannot be read for another reason
    std::vector<std::string> timedOutSources;  ///< those that did not answer before the deadline
    std::vector<std::string> warnings;         ///< one line for each malformed source; no gap

    bool IsEmpty() const {
        return failedCollectors == 0 && deniedSources.empty() && failedSources.empty() &&
               timedOutSources.empty();
    }
};

/// The exit status of a run that is done.
inline EExitStatus StatusOf(const TSourceGaps& gaps, bool isStrict) {
    return isStrict && !gaps.IsEmpty() ? eExitGaps : eExitDone;
}

}  // namespace NVORHOST
