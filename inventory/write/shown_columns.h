// The columns in which people look at resources, by type.
#pragma once

#include "inventory/model/resource.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace NINVENTORY {

struct TShownColumn {
    std::string_view title;
    std::string_view property;
};

/// How the resources of a type are shown.
struct TShownColumns {
    std::string_view type;
    std::span<const TShownColumn> columns;
    /// A place with nothing in it is one whose property has this value; "" if the type has no such places.
    std::string_view emptyProperty{};
    std::string_view emptyValue{};

    /// False for types that only other programs need.
    bool IsShown() const { return !columns.empty(); }
    std::vector<std::string> GetTitles() const;
};

/// Returns the row of a type; that of unknown types if it has none.
const TShownColumns& GetShownColumns(std::string_view type);

/// True if the resource is a place for a part, such as a port or a socket, and empty.
bool IsEmptyPlace(const TShownColumns& columns, const TResource& resource);

}  // namespace NINVENTORY
