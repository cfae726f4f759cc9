// Receives a document resource by resource, so that documents of any size can be read in little memory.
#pragma once

#include "inventory/model/resource.h"

#include <string_view>

namespace NINVENTORY {

/// Implementations may throw any exception, which ends the reading and propagates to the caller.
class IDocumentEvents {
  public:
    virtual ~IDocumentEvents() = default;

    virtual void BeginDocument(const TDocumentHead& head) = 0;
    /// The resources that follow belong to a list of this type; empty for the context.
    virtual void BeginList(std::string_view listType, int line) = 0;
    virtual void AddResource(TResource&& resource) = 0;
    /// The inventory may lack resources of a type, because their sources could not be looked at.
    virtual void NoteUnknownType(std::string_view /*type*/, const NVORHOST::TValueSource& /*source*/) {}
};

}  // namespace NINVENTORY
