// Notes for the top of a page: each names a resource that differs from its kin, or reports a state other than
// OK: the lines that a reader looks for first.
#pragma once

#include "inventory/report/html_writer.h"
#include "inventory/report/report_inventory.h"

namespace NINVENTORY {

/// Writes at most a few lines with links to their sections; nothing if there is nothing to note.
void WriteNotes(THtmlWriter& html, const TReportInventory& inventory);

}  // namespace NINVENTORY
