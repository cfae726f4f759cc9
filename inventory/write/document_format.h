// The format "xml": documents as they were read.
#pragma once

#include "inventory/write/inventory_format.h"

#include <memory>
#include <ostream>

namespace NINVENTORY {

/// Returns a writer of documents, which follow one another. `out` must outlive it.
/// Errors: throws NVORHOST::TDocumentError for a source that is not a document.
std::unique_ptr<IInventoryFormat> MakeDocumentFormat(std::ostream& out);

}  // namespace NINVENTORY
