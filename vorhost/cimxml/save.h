// Writes a namespace, or single instances, as CIM-XML.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <ostream>
#include <vector>

namespace NVORHOST {

/// Writes classes with their declarations, then their instances, so that loading gives an equal namespace.
/// The document is well formed for any byte in any value; see docs/namespace-format.md for text that XML
/// cannot carry. Errors: the state of `out` tells of write failures.
void SaveNamespace(const TMemoryNamespace& source, std::ostream& out);

/// Writes the committed instances of the classes, in order, properties in the order they were set.
void SaveInstances(const std::vector<boost::shared_ptr<TMemoryClass>>& classes, std::ostream& out);

}  // namespace NVORHOST
