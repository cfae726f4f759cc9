// Inventories as comma-separated values (RFC 4180). docs/formats.md describes the columns.
#pragma once

#include "inventory/write/inventory_format.h"

#include <memory>
#include <ostream>

namespace NINVENTORY {

/// Returns a writer of one table for all sources, with a row for each value. `out` must outlive it.
/// Every field is quoted, except for fields without a value, which have no characters at all.
std::unique_ptr<IInventoryFormat> MakeCsvWriter(std::ostream& out);

}  // namespace NINVENTORY
