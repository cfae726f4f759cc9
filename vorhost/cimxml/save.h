// Saves a namespace, or instances of one class, as CIM-XML.
#pragma once

#include "documents/document_error.h"
#include "vorhost/model/memory_namespace.h"

#include <ostream>
#include <string>
#include <vector>

namespace NVORHOST {

/// Writes the class declarations, then the instances. Loading the document gives an equal namespace. The
/// document is well-formed for any bytes in values; docs/namespace-format.md describes text that XML cannot
/// represent.
/// Errors: write failures set the state of `out`. Throws TDocumentError for data that would not read back
///         equal: a name that is not valid XML text or longer than 4096 bytes, a date-time with invalid
///         fields, more than 4096 properties in one class or instance. `out` then contains a part of the
///         document.
void SaveNamespace(const TMemoryNamespace& source, std::ostream& out);

/// Writes instances of one class, with properties in the order in which they were set.
/// Errors: see SaveNamespace.
void SaveInstances(const std::string& className,
                   const std::vector<boost::shared_ptr<TMemoryInstance>>& instances, std::ostream& out);

}  // namespace NVORHOST
