// Stored rows as the resources that they were made from.
#pragma once

#include "fleet/model/rows.h"
#include "inventory/model/resource.h"

#include <span>

namespace NFLEET {

/// Returns the resource of a row and its version, with identifying values, but without volatile ones.
NINVENTORY::TResource AssembleResource(const TPresence& presence, const TVersion& version);

/// Inserts the volatile values of `resource` at their positions. `values` are in the order of TInventory and
/// may belong to other resources as well.
void AddVolatileValues(std::span<const TVolatileValue> values, const TDigest& resource,
                       NINVENTORY::TResource& target);

}  // namespace NFLEET
