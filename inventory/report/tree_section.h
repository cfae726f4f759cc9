// The PCI and USB trees as nested lists.
#pragma once

#include "inventory/report/html_writer.h"
#include "inventory/report/report_inventory.h"

namespace NINVENTORY {

bool HasPci(const TReportInventory& inventory);
void WritePciTree(THtmlWriter& html, const TReportInventory& inventory);

bool HasUsb(const TReportInventory& inventory);
void WriteUsbTree(THtmlWriter& html, const TReportInventory& inventory);

}  // namespace NINVENTORY
