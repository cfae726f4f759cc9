// The picture of storage: disks and volumes as bars with their partitions, and what each part holds.
#pragma once

#include "inventory/report/html_writer.h"
#include "inventory/report/report_inventory.h"

#include <cstdint>
#include <optional>

namespace NINVENTORY {

/// Returns the size of a disk, volume, partition or file system in bytes; nullopt if it is unknown or not a
/// number below 2^64.
std::optional<std::uint64_t> GetSize(const TResource& extent);

bool HasStorage(const TReportInventory& inventory);

void WriteStorage(THtmlWriter& html, const TReportInventory& inventory);

}  // namespace NINVENTORY
