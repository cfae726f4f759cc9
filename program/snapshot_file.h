// The file of a snapshot, as `noxinfo snapshot` and `noxinfo collect --snapshot` write it.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <ostream>
#include <string_view>

namespace NVORHOST {

/// Writes the namespace as CIM-XML, compressed by gzip if `path` ends in ".gz". Errors: see SaveNamespace.
void WriteSnapshot(const TMemoryNamespace& collected, std::string_view path, std::ostream& out);

}  // namespace NVORHOST
