// Which host classes the hardware-inventory document lists, under which type and in which list. Plain data,
// so that a class is listed by adding a row.
#pragma once

#include <span>
#include <string>
#include <string_view>

// Types of their own, so that a row with swapped cells does not compile.
struct TListedType {
    std::string_view name;
};
struct TSourceClass {
    std::string_view name;
};

/// The instances of `source`, listed as `type` in the resource list of the type `list`.
struct TListRow {
    const std::string* list;  // never null; not built before the module is loaded
    TListedType type;
    TSourceClass source;
    bool flag;  // handed on with the class, without effect
};

/// Every row, in the order of the document.
std::span<const TListRow> GetResourceLists() noexcept;
