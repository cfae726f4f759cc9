// Inventories as hardware bills of materials: CycloneDX 1.5 in JSON. docs/formats.md describes the
// components.
#pragma once

#include "inventory/write/inventory_format.h"

#include <memory>
#include <ostream>

namespace NINVENTORY {

/// Returns a writer of one bill of materials for all sources. `out` must outlive it.
/// The output, including the serial number of the bill, depends on the resources only.
/// Memory: all components, because the serial number, which comes first, is derived from them.
/// Errors: throws NVORHOST::TDocumentError if they take more than 256 MiB.
std::unique_ptr<IInventoryFormat> MakeCycloneDxWriter(std::ostream& out);

}  // namespace NINVENTORY
