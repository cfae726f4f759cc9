// A comparison of two inventories as one page for browsers and paper, with the policy of reports.
#pragma once

#include "inventory/compare/comparison.h"

#include <ostream>

namespace NINVENTORY {

/// Writes the two sources, a table of every difference, and what is unchanged and was left out.
void WriteDiffPage(const TComparison& comparison, const TInventory& before, const TInventory& after,
                   std::ostream& out);

}  // namespace NINVENTORY
