// The formats of `noxinfo show`.
#pragma once

#include "inventory/read/document_events.h"

#include <string>

namespace NINVENTORY {

/// Receives any number of sources, each of which has one or more documents, and writes them in one format.
/// The stream carries the errors.
class IInventoryFormat : public IDocumentEvents {
  public:
    /// The documents that follow are from a source of this name, such as a path or "this machine".
    virtual void BeginSource(const std::string& name) = 0;
    /// Ends the output. Call once.
    virtual void Finish() = 0;
};

}  // namespace NINVENTORY
