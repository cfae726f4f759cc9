// Reads hardware documents in the form in which this project writes them, line by line, and looks up
// resources whose bytes were read before. Documents in any other form are left to the XML parser.
#pragma once

#include "fleet/load/read_inventory.h"
#include "fleet/load/version_cache.h"

#include <optional>
#include <string_view>

namespace NFLEET {

/// Reads a whole document. Returns nullopt for a document with anything that the form does not have: another
/// order or division of lines, comments, references other than `&amp;`, `&lt;` and `&gt;`, characters outside
/// ASCII, control characters, identifiers that occur twice. What it returns is what ReadDocument and
/// DivideResource give. Shape:  one element on a line; see docs/inventory-format.md. Errors: throws
/// TDocumentCause for a document in this form whose time is malformed.
std::optional<TReadInventory> ScanDocument(std::string_view text, TVersionCache& cache);

}  // namespace NFLEET
