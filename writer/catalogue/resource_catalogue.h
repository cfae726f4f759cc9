// The catalogue of the hardware-inventory document: the classes it reports, the property that identifies
// their instances, and the properties it writes, in order. Plain data: adding a row adds a property.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

/// The origin of a property's value.
enum class EValueOrigin {
    instance,      ///< the property `sourceName` of the instance
    resourceType,  ///< the resource type of the instance
    resourceId,    ///< the identifier of the instance
};

/// One property of the document. `sourceName` is empty unless the origin is `instance`.
struct TPropertyRow {
    std::string_view outputName;
    std::string_view sourceName;
    EValueOrigin origin;
};

/// The properties that every class begins with: Name, Description and ObjectType.
using TCommonHead = std::array<TPropertyRow, 3>;

/// One class: its host name, the property that identifies its instances, and its properties in document
/// order, `head` before `properties`.
struct TResourceClass {
    std::string_view className;
    std::string_view keyProperty;
    TCommonHead head;
    std::span<const TPropertyRow> properties;
};

inline constexpr std::size_t resourceClassCount = 28;

/// Returns the whole catalogue.
std::span<const TResourceClass, resourceClassCount> GetResourceCatalogue() noexcept;

/// Returns the row of a class, compared exactly; null for an unlisted class.
const TResourceClass* FindResourceClass(std::string_view className) noexcept;
