// The columns in which people look at resources, by type.
#pragma once

#include "inventory/model/resource.h"

#include <span>
#include <string>
#include <string_view>

namespace NINVENTORY {

/// How much people look for a column.
enum class EWorth {
    major,
    minor,              ///< left out of tables that are too wide
    minorBesideSerial,  ///< minor if a column "serial number" has text
};

/// A name is that of a property, or of an entry of OtherIdentifyingInfo that IdentifyingDescriptions gives
/// this name, such as "Serial number".
struct TShownColumn {
    std::string_view title;
    std::string_view property;
    EWorth worth = EWorth::major;
    /// The names that are looked for if the resource has no value of `property`.
    std::span<const std::string_view> others{};
    /// Makes the text from several properties, of which `property` is the main one; null for a plain value.
    std::string (*show)(const TResource& resource) = nullptr;
};

/// How the resources of a type are shown.
struct TShownColumns {
    std::string_view type;
    std::span<const TShownColumn> columns;
    /// A place with nothing in it is one whose property has this value, or this value and more words after a
    /// comma; "" if the type has no such places.
    std::string_view emptyProperty{};
    std::string_view emptyValue{};
    /// True for places of parts that have a table of their own: the filled ones are only counted, and the
    /// empty ones named.
    bool countsFilled = false;
    /// True for a type that adds to another one: a resource of which only the first column is known has no
    /// row.
    bool isDetail = false;

    /// False for types that only other programs need.
    bool IsShown() const { return !columns.empty(); }
};

/// Returns the row of a type; that of unknown types, whose `type` is empty, if it has none.
const TShownColumns& GetShownColumns(std::string_view type);

/// Returns the text of a cell, which may contain any character of the values; "" if nothing is known.
std::string ShowColumn(const TResource& resource, const TShownColumn& column);

/// False for types that only other programs need, and for details that are not known.
bool IsShownInTables(const TShownColumns& columns, const TResource& resource);

/// True if the resource is a place for a part, such as a port or a socket, and empty.
bool IsEmptyPlace(const TShownColumns& columns, const TResource& resource);

}  // namespace NINVENTORY
