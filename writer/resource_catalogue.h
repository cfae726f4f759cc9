// The vocabulary of the hardware-inventory document: which classes are reported, what identifies their
// instances, and which properties go out, in which order and under which names. Plain data, so that a
// property is added by adding a row.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

/// Where the value of a property row comes from.
enum class EValueOrigin {
    instance,      ///< the property `sourceName` of the instance
    resourceType,  ///< the resource type under which the instance is listed
    resourceId,    ///< the identifier of the instance
};

/// One property of the document. `sourceName` is empty unless the value comes from the instance.
struct TPropertyRow {
    std::string_view outputName;
    std::string_view sourceName;
    EValueOrigin origin;
};

/// Every class begins with Name, Description and ObjectType.
using TCommonHead = std::array<TPropertyRow, 3>;

/// One class: its host name, the property that identifies its instances, and its properties in the order of
/// the document, `head` before `properties`.
struct TResourceClass {
    std::string_view className;
    std::string_view keyProperty;
    TCommonHead head;
    std::span<const TPropertyRow> properties;
};

inline constexpr std::size_t resourceClassCount = 28;

/// The whole catalogue.
std::span<const TResourceClass, resourceClassCount> GetResourceCatalogue() noexcept;

/// The row of a class, compared exactly; null for a class that is not listed.
const TResourceClass* FindResourceClass(std::string_view className) noexcept;
