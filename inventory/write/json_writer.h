// Inventories as JSON (RFC 8259). docs/json-format.md describes the format.
#pragma once

#include "inventory/write/inventory_format.h"

#include <memory>
#include <ostream>

namespace NINVENTORY {

/// Returns a writer of one JSON text for all sources. `out` must outlive it.
std::unique_ptr<IInventoryFormat> MakeJsonWriter(std::ostream& out);

/// Returns a writer of one JSON text a line for each resource. `out` must outlive it.
std::unique_ptr<IInventoryFormat> MakeNdjsonWriter(std::ostream& out);

}  // namespace NINVENTORY
