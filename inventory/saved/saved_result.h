// A saved namespace may hold the result of a plug-in, and holds the time of its collection.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <optional>
#include <string>

namespace NVORHOST {

/// Returns the bytes of the document that a saved result has; nullopt for a saved namespace. `name` is that
/// of the file. Errors: throws TDocumentError for a result without a document.
std::optional<std::string> FindResult(const std::string& name, const TMemoryNamespace& loaded);

/// Returns the local time of the operating system as documents write it; empty if it is missing.
std::string FindTimestamp(const TMemoryNamespace& loaded);

}  // namespace NVORHOST
