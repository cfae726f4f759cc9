// The format "html": one page for browsers and paper. It has no script, loads nothing, and its policy forbids
// both.
#pragma once

#include "inventory/write/inventory_format.h"

#include <memory>
#include <ostream>

namespace NINVENTORY {

/// Returns a writer of one page with every source, one after the other. `out` must outlive it.
/// Memory: all resources of all sources.
std::unique_ptr<IInventoryFormat> MakeReportWriter(std::ostream& out);

}  // namespace NINVENTORY
