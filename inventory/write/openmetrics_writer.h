// Inventories as metrics. docs/formats.md describes them.
#pragma once

#include "inventory/write/inventory_format.h"

#include <memory>
#include <ostream>
#include <span>
#include <string_view>

namespace NINVENTORY {

/// A number that becomes a metric. The unit is the one in `name`, which is a base unit.
struct TGauge {
    std::string_view type;
    std::string_view property;
    std::string_view name;
    std::string_view help;
};

/// Returns every row.
std::span<const TGauge> GetGauges();

/// Returns a writer of metrics in the OpenMetrics text format, restricted to what parsers of the older text
/// format accept as well. `out` must outlive it.
/// Memory: all metrics, because those of one name are contiguous.
/// Errors: throws NVORHOST::TDocumentError if they take more than 16 MiB.
std::unique_ptr<IInventoryFormat> MakeOpenMetricsWriter(std::ostream& out);

}  // namespace NINVENTORY
