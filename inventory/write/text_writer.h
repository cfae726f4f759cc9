// Inventories as text for people.
#pragma once

#include "inventory/write/inventory_format.h"
#include "inventory/write/text_table.h"

#include <memory>
#include <ostream>

namespace NINVENTORY {

struct TTextSettings {
    TTextLayout layout;
    bool isLong = false;      ///< every property instead of tables
    bool hasSources = false;  ///< every property with its sources, and those whose value is not known
};

/// Returns a writer of tables, one for each type in the order of the source. `out` must outlive it.
/// Memory: up to a thousand rows of a table; longer tables continue with titles of their own.
std::unique_ptr<IInventoryFormat> MakeTextWriter(std::ostream& out, TTextSettings settings);

}  // namespace NINVENTORY
