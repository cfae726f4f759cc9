// The differences between two inventories. Every output of a comparison is written from this.
#pragma once

#include "inventory/compare/inventory.h"
#include "inventory/model/resource.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace NINVENTORY {

enum class EChange {
    replaced,  ///< the place has another part
    moved,     ///< the part is at another place
    removed,
    added,
    updated,  ///< the version or another property of firmware differs
    changed,  ///< properties of the resource differ
};

/// Returns the word for a change, such as "replaced".
std::string_view GetWord(EChange change);

/// A property that differs. A pointer is null if that side does not have the property.
struct TPropertyDifference {
    const TProperty* before = nullptr;
    const TProperty* after = nullptr;

    const std::string& GetName() const { return before != nullptr ? before->name : after->name; }
};

/// A resource that differs. Pointers refer to the compared inventories.
struct TDifference {
    EChange change = EChange::changed;
    const TResource* before = nullptr;  ///< null if the resource was added
    const TResource* after = nullptr;   ///< null if the resource was removed
    /// In the order of the newer resource, those that it does not have last; empty for added and removed
    /// ones. It may be empty for others, whose identifiers differ.
    std::vector<TPropertyDifference> properties{};

    const TResource& GetResource() const { return after != nullptr ? *after : *before; }
};

/// Resources of a type that are the same in both.
struct TUnchanged {
    std::string_view type;
    std::size_t count = 0;
};

/// A type or property that only one of the two inventories can contain, so that it was not compared.
struct TOneSided {
    std::string_view type;
    std::string_view property{};  ///< empty for the whole type
    bool isInNew = false;         ///< true if the new inventory has it, false if the old one does

    bool operator==(const TOneSided&) const = default;
};

/// A resource or value that one inventory has and that the other could not look at, so that it was not
/// compared.
struct TNotKnown {
    const TResource* resource = nullptr;             ///< the one that is known, or has the value
    const TProperty* property = nullptr;             ///< of `resource`; null for the whole resource
    const NVORHOST::TValueSource* source = nullptr;  ///< of the other side; never null
    bool isInNew = false;                            ///< true if the new inventory does not know it
};

struct TComparison {
    std::vector<TDifference> differences;
    std::vector<TUnchanged> unchanged;
    std::vector<TOneSided> oneSided;
    std::vector<TNotKnown> notKnown;
    std::size_t volatileDifferences = 0;  ///< properties that differ, but change by themselves
    bool hasAuxiliary = false;            ///< links, processes and the like were left out

    bool IsSame() const { return differences.empty(); }
    std::size_t Count(EChange change) const;
};

/// A type, or a property of a type, that is not compared.
struct TIgnored {
    std::string type;
    std::string property{};  ///< empty for the whole type
};

struct TComparisonSettings {
    bool comparesAll = false;  ///< also what changes by itself, and what only one side can contain
    std::vector<TIgnored> ignored{};
};

/// Compares two inventories, which must outlive the result. The result has the types in the order in which
/// people look for them, does not depend on the order of resources, and is symmetric: exchanging the
/// inventories exchanges before and after, added and removed. Time: that of sorting the resources.
TComparison Compare(const TInventory& before, const TInventory& after, const TComparisonSettings& settings);

}  // namespace NINVENTORY
