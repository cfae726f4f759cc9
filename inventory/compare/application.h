// Applies a comparison: the proof that it is complete.
#pragma once

#include "inventory/compare/comparison.h"

namespace NINVENTORY {

/// Returns the resources of `before` with the differences applied: removed ones are gone, added ones follow,
/// the others have the type, the identifier and the differing properties of the new inventory. If everything
/// was compared, these are the resources of the new inventory, apart from the order of resources and
/// properties, and from their lines and lists. `comparison` must be one of `before`.
std::vector<TResource> Apply(const TComparison& comparison, const TInventory& before);

}  // namespace NINVENTORY
