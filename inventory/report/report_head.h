// The head of a machine: its name, its system, and the figures that people look for first.
#pragma once

#include "inventory/report/html_writer.h"
#include "inventory/report/report_inventory.h"

#include <string>

namespace NINVENTORY {

/// Returns the name of the machine; "Machine without a name" if the source has none.
std::string GetMachineName(const TReportInventory& inventory);

/// Writes the heading of level 1, the facts and the strip of figures.
void WriteHead(THtmlWriter& html, const TReportInventory& inventory);

}  // namespace NINVENTORY
