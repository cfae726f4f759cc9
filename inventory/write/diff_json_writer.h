// A comparison of two inventories as JSON (RFC 8259). docs/json-format.md describes the format.
#pragma once

#include "inventory/compare/comparison.h"

#include <ostream>

namespace NINVENTORY {

/// Writes one JSON text.
void WriteDiffJson(const TComparison& comparison, const TInventory& before, const TInventory& after,
                   std::ostream& out);

/// Writes one JSON text a line for each difference.
void WriteDiffNdjson(const TComparison& comparison, const TInventory& before, const TInventory& after,
                     std::ostream& out);

}  // namespace NINVENTORY
