// A comparison of two inventories as text for people.
#pragma once

#include "inventory/compare/comparison.h"
#include "inventory/write/text_table.h"

#include <ostream>

namespace NINVENTORY {

/// Writes the two sources, every difference with a sign and its word, and counts of what is unchanged and of
/// what was left out. Lines are folded at the width of the layout; without UTF-8, signs are ASCII.
void WriteDiffText(const TComparison& comparison, const TInventory& before, const TInventory& after,
                   const TTextLayout& layout, std::ostream& out);

}  // namespace NINVENTORY
