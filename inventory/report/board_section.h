// The picture of a board: processors and memory slots, and the same facts as a list.
#pragma once

#include "inventory/report/html_writer.h"
#include "inventory/report/report_inventory.h"

namespace NINVENTORY {

/// True if the source has processors, memory modules or memory slots.
bool HasBoard(const TReportInventory& inventory);

void WriteBoard(THtmlWriter& html, const TReportInventory& inventory);

}  // namespace NINVENTORY
