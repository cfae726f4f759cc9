// Expansion slots: connectors as long as on the board, and what is in them.
#pragma once

#include "inventory/report/html_writer.h"
#include "inventory/report/report_inventory.h"

namespace NINVENTORY {

bool HasSlots(const TReportInventory& inventory);

void WriteSlots(THtmlWriter& html, const TReportInventory& inventory);

}  // namespace NINVENTORY
