// The changes between two inventories, as a section of a report and as parts of a page.
#pragma once

#include "inventory/compare/comparison.h"
#include "inventory/report/html_writer.h"

namespace NINVENTORY {

/// Writes the section of a report.
void WriteChanges(THtmlWriter& html, const TComparison& comparison, const TInventory& before);

/// Writes a table with every difference, of which there is at least one.
void WriteChangesTable(THtmlWriter& html, const TComparison& comparison);

/// Writes what was not compared because only one side can contain it; nothing if there is no such thing.
void WriteOneSided(THtmlWriter& html, const TComparison& comparison);

}  // namespace NINVENTORY
