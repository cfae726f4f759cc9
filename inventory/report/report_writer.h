// The format "html": one page for browsers and paper. It has no script, loads nothing, and its policy forbids
// both.
#pragma once

#include "inventory/write/inventory_format.h"

#include <memory>
#include <ostream>

namespace NINVENTORY {

enum class EReportSources {
    separate,  ///< every source has a part of the page
    compared,  ///< the last source has the page, and what changed since the first is a section of it
};

/// Returns a writer of one page. `out` must outlive it. Memory: all resources of all sources.
std::unique_ptr<IInventoryFormat> MakeReportWriter(std::ostream& out, EReportSources sources);

}  // namespace NINVENTORY
