#include "machine/supervision/collect_outcome.h"

#include <algorithm>
#include <functional>

namespace NVORHOST {
namespace {

void AddSorted(std::vector<std::string>& all, const std::vector<std::string>& more) {
    all.insert(all.end(), more.begin(), more.end());
    std::ranges::sort(all);
    all.erase(std::unique(all.begin(), all.end()), all.end());
}

// Each process that reads a malformed source warns about it.
void AppendNew(std::vector<std::string>& all, const std::vector<std::string>& more) {
    for (const std::string& line : more) {
        if (std::ranges::find(all, line) == all.end()) {
            all.push_back(line);
        }
    }
}

}  // namespace

bool TCollectOutcome::HasGaps() const {
    return failedCollectors != 0 || !deniedSources.empty() || !failedSources.empty() ||
           !timedOutSources.empty();
}

TCollectOutcome CombineReports(std::span<const TCollectReport> reports) {
    TCollectOutcome outcome;
    for (const TCollectReport& report : reports) {
        AddOutcome(
            {report.failure ? 1U : 0U, report.deniedSources, report.failedSources, report.timedOutSources,
             report.asleepSources, report.warnings, report.replacedBytes, report.values},
            outcome);
    }
    return outcome;
}

void AddOutcome(const TCollectOutcome& more, TCollectOutcome& outcome) {
    outcome.failedCollectors += more.failedCollectors;
    outcome.replacedBytes += more.replacedBytes;
    std::ranges::transform(outcome.values, more.values, outcome.values.begin(), std::plus<>());
    AddSorted(outcome.deniedSources, more.deniedSources);
    AddSorted(outcome.failedSources, more.failedSources);
    AddSorted(outcome.timedOutSources, more.timedOutSources);
    AddSorted(outcome.asleepSources, more.asleepSources);
    AppendNew(outcome.warnings, more.warnings);
}

}  // namespace NVORHOST
