// The reader of CIM-XML itself. Programs call `LoadNamespace` of load.h instead, which loads this on demand.
#pragma once

#include "vorhost/cimxml/cim_xml_error.h"
#include "vorhost/model/memory_namespace.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// Reads a document that is in memory; `name` stands for the file in messages. Otherwise as `LoadNamespace`.
void LoadNamespaceFromText(const std::string& name, std::string_view text, TMemoryNamespace& target);

/// Reads a file, which may be compressed with gzip, piece by piece. As `LoadNamespace`.
void LoadNamespaceFromFile(const std::string& path, TMemoryNamespace& target);

}  // namespace NVORHOST
