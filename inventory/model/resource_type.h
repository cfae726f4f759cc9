// The types of resources: their classes in the namespace, their lists in documents, and their names for
// people.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace NINVENTORY {

/// One class of the namespace as a type of resource.
struct TResourceType {
    std::string_view className;
    std::string_view type;         ///< "PhysicalMemory"
    std::string_view list;         ///< resource list of the document; empty for its context, "-" for none
    std::string_view keyProperty;  ///< name, in documents, of the property that the identifier is made from
    std::string_view singular;     ///< "memory module"
    std::string_view plural;       ///< "memory modules"
};

/// Returns every row, in the order in which people look for them.
std::span<const TResourceType> GetResourceTypes();

/// Returns the row of a class; null for a class without one.
const TResourceType* FindClassType(std::string_view className);

/// Returns the first row of a resource type; null for a type without one.
const TResourceType* FindResourceType(std::string_view type);

/// Returns the name that the key of an identifier has for the key property of a class, which is its name in
/// the namespace; empty for a class without a row.
std::string_view GetKeyName(std::string_view className);

/// Returns the type of the resources of a class: that of its row, else the class name without its schema
/// prefix, such as "Fan" for "CIM_Fan".
std::string GetTypeOfClass(std::string_view className);

}  // namespace NINVENTORY
