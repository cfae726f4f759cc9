// Loads a namespace from a CIM-XML file (DSP0201 2.x, DSP0203).
#pragma once

#include "documents/document_error.h"
#include "vorhost/model/memory_namespace.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// Reads a file, which may be compressed with gzip, and adds its classes and instances to `target`.
/// docs/namespace-format.md describes the format. The first call loads the reader and the XML library, so
/// that programs that read no document do not pay for them at start-up.
/// Errors: throws TDocumentError, also if `target` already has one of the classes. `target` is then
///         unchanged.
void LoadNamespace(const std::string& path, TMemoryNamespace& target);

/// Loads a document from memory. `name` replaces the file name in messages. Errors as for a file.
void LoadNamespace(const std::string& name, std::string_view text, TMemoryNamespace& target);

}  // namespace NVORHOST
