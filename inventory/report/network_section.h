// Network ports with the addresses that they carry.
#pragma once

#include "inventory/report/html_writer.h"
#include "inventory/report/report_inventory.h"

namespace NINVENTORY {

bool HasNetwork(const TReportInventory& inventory);

void WriteNetwork(THtmlWriter& html, const TReportInventory& inventory);

}  // namespace NINVENTORY
