// Writes a namespace, or single instances, as CIM-XML.
#pragma once

#include "vorhost/cimxml/cim_xml_error.h"
#include "vorhost/model/memory_namespace.h"

#include <ostream>
#include <string>
#include <vector>

namespace NVORHOST {

/// Writes classes with their declarations, then their instances, so that loading gives an equal namespace.
/// The document is well formed for any byte in any value; see docs/namespace-format.md for text that XML
/// cannot carry.
/// Errors: the state of `out` tells of write failures. Throws TCimXmlError for what cannot be written so that
///         it reads back the same: a name that is no XML text or longer than 4096 bytes, a date-time with
///         impossible fields, more than 4096 properties in one class or instance. `out` then holds a part of
///         the document.
void SaveNamespace(const TMemoryNamespace& source, std::ostream& out);

/// Writes instances of one class, in order, properties in the order they were set. Errors as above.
void SaveInstances(const std::string& className,
                   const std::vector<boost::shared_ptr<TMemoryInstance>>& instances, std::ostream& out);

}  // namespace NVORHOST
