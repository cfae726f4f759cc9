#include "machine/supervision/collect_outcome.h"

#include <algorithm>

namespace NVORHOST {
namespace {

void Append(std::vector<std::string>& all, const std::vector<std::string>& more) {
    all.insert(all.end(), more.begin(), more.end());
}

void SortAndDeduplicate(std::vector<std::string>& texts) {
    std::ranges::sort(texts);
    texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
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
        outcome.failedCollectors += report.failure ? 1U : 0U;
        outcome.replacedBytes += report.replacedBytes;
        Append(outcome.deniedSources, report.deniedSources);
        Append(outcome.failedSources, report.failedSources);
        Append(outcome.timedOutSources, report.timedOutSources);
        AppendNew(outcome.warnings, report.warnings);
    }
    SortAndDeduplicate(outcome.deniedSources);
    SortAndDeduplicate(outcome.failedSources);
    SortAndDeduplicate(outcome.timedOutSources);
    return outcome;
}

}  // namespace NVORHOST
