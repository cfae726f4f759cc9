// The CIM-XML reader. Programs call `LoadNamespace` (load.h), which loads the module of this reader on
// demand.
#pragma once

#include "documents/document_error.h"
#include "vorhost/model/memory_namespace.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// Reads a document from memory; `name` replaces the file name in messages. See `LoadNamespace`.
void LoadNamespaceFromText(const std::string& name, std::string_view text, TMemoryNamespace& target);

/// Reads a file piece by piece. See `LoadNamespace`.
void LoadNamespaceFromFile(const std::string& path, TMemoryNamespace& target);

}  // namespace NVORHOST
