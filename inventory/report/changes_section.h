// The section with the changes between two inventories.
#pragma once

#include "inventory/compare/comparison.h"
#include "inventory/report/html_writer.h"

namespace NINVENTORY {

void WriteChanges(THtmlWriter& html, const TComparison& comparison, const TInventory& before);

}  // namespace NINVENTORY
