// The host classes that the hardware-inventory document lists, with their resource type and their list. Plain
// data: adding a row adds a class.
#pragma once

#include <span>
#include <string>
#include <string_view>

// Distinct types, so that a row with swapped cells does not compile.
struct TListedType {
    std::string_view name;
};
struct TSourceClass {
    std::string_view name;
};

/// Lists the instances of `source` with the resource type `type` in the resource list of type `list`.
struct TListRow {
    const std::string* list;  // never null; the string is constructed when the module is loaded
    TListedType type;
    TSourceClass source;
};

/// Returns every row, in document order.
std::span<const TListRow> GetResourceLists() noexcept;
