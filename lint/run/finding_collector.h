// The checks on the files of a machine as a collector. The process of a run opens nothing of the machine
// itself: the checks run where the collectors do, under the same deadline, and their findings arrive as
// instances.
#pragma once

#include "lint/frame/finding.h"
#include "machine/collect/frame/collector.h"
#include "vorhost/model/memory_namespace.h"

#include <vector>

namespace NLINT {

/// Commits an instance for each finding. It is not in the list of collectors: a command adds it to its
/// choice.
extern const NVORHOST::TCollector findingCollector;

/// Returns the findings that findingCollector has committed.
std::vector<TFinding> GetFindings(const NVORHOST::TMemoryNamespace& collected);

}  // namespace NLINT
