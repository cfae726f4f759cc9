// An inventory in memory, as one side of a comparison.
#pragma once

#include "inventory/model/resource.h"

#include <string>
#include <string_view>
#include <vector>

namespace NINVENTORY {

/// Everything that a source has: one document or several, or a namespace.
struct TInventory {
    std::string source;                    ///< name for people, such as a path
    std::vector<TDocumentHead> documents;  ///< at least one, unless the inventory is empty
    std::vector<std::string> types;        ///< types of the lists of the source, which may be empty lists
    std::vector<TResource> resources;
    /// The types whose resources could not be looked at; `property` is the type.
    std::vector<TPropertySource> unknownTypes{};

    /// True if the source would contain the resources of this type if there were any: documents have fixed
    /// types, and a namespace has those of its classes.
    bool Covers(std::string_view type) const;
    /// Returns why resources of this type may be missing; null if none are.
    const NVORHOST::TValueSource* FindUnknown(std::string_view type) const;
    /// Returns the time of the first document that has one; "" if none has.
    std::string_view GetTimestamp() const;
};

}  // namespace NINVENTORY
