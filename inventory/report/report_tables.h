// A table of each type of resource, and all that is known about each resource, folded.
#pragma once

#include "inventory/report/html_writer.h"
#include "inventory/report/report_inventory.h"

#include <string>
#include <string_view>
#include <vector>

namespace NINVENTORY {

/// Returns the types that have a table, in the order of the source.
std::vector<std::string> ListShownTypes(const TReportInventory& inventory);

/// Returns the name of a type for so many resources, such as "Memory modules".
std::string GetTypeTitle(std::string_view type, std::size_t count);

/// Writes the table of one type, with a heading of level 3.
void WriteTypeTable(THtmlWriter& html, const TReportInventory& inventory, const std::string& type);

/// Writes the table of one type without a heading and without what is known besides: how many places of the
/// type are empty follows it.
void WriteShortTypeTable(THtmlWriter& html, const TReportInventory& inventory, const std::string& type);

/// Writes the content of a cell: the value, or that it is unknown.
void WriteKnown(THtmlWriter& html, std::string_view value);

}  // namespace NINVENTORY
