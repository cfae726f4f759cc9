// The gaps of a collection: sources that it could not read, and warnings about malformed ones.
#pragma once

#include "machine/collect/run/collection_run.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace NVORHOST {

/// Every list of sources is sorted and has no duplicates.
struct TCollectOutcome {
    std::size_t failedCollectors = 0;
    std::vector<std::string> deniedSources;    ///< permission denied
    std::vector<std::string> failedSources;    ///< unreadable for another reason
    std::vector<std::string> timedOutSources;  ///< no answer before the deadline
    std::vector<std::string> asleepSources;    ///< files of sleeping devices, which were not read
    std::vector<std::string> warnings;  ///< one line for each malformed source, in the order of detection
    std::size_t replacedBytes = 0;      ///< bytes of device text that were not valid UTF-8

    /// Properties by the status of their values; all 0 if they were not counted.
    TValueCounts values{};

    /// True if a collector failed or a source could not be read. Warnings, replaced bytes and devices that
    /// were left asleep are not gaps.
    bool HasGaps() const;
};

/// Combines the reports of all collectors. Several of them may report the same source or the same warning.
TCollectOutcome CombineReports(std::span<const TCollectReport> reports);

/// Adds the gaps of another collection.
void AddOutcome(const TCollectOutcome& more, TCollectOutcome& outcome);

}  // namespace NVORHOST
