// Identities that should be those of one machine or part, and that several machines have.
#pragma once

#include "fleet/report/site.h"

#include <vector>

namespace NFLEET {

/// Returns what several machines have now: system UUIDs, serial numbers and names of machines first, then
/// parts. `site` has the parts.
std::vector<TDuplicate> FindDuplicates(const TSite& site);

}  // namespace NFLEET
