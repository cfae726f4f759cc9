// Reads inventory documents.
//
// Failure language: NVORHOST::TDocumentError, whose message is one line, "FILE:LINE: cause".
#pragma once

#include "inventory/read/document_events.h"
#include "inventory/read/document_input.h"

#include <cstddef>

namespace NINVENTORY {

/// The largest system-information document in bytes.
inline constexpr std::size_t maxSystemInformationBytes = std::size_t{16} << 20;

/// Reads a hardware or system-information document to its end. The first hardware document loads the module
/// of its reader and the XML library, so that programs that read none do not pay for them at start-up.
/// Memory: proportional to the largest resource; system information is kept whole.
/// Errors: throws TDocumentError for other content, a malformed document and read errors; std::bad_alloc.
void ReadDocument(TDocumentInput& input, IDocumentEvents& events);

}  // namespace NINVENTORY
