// Reads a namespace from a CIM-XML file (elements of DSP0201 2.x as DSP0203 declares them).
#pragma once

#include "vorhost/cimxml/cim_xml_error.h"
#include "vorhost/model/memory_namespace.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// Reads the file, which may be compressed with gzip, and adds its classes, with their instances, to
/// `target`. See docs/namespace-format.md for what is read. The XML library and the reader are loaded with
/// the first call, so that programs that read no document do not pay for them at start-up. Errors: throws
/// TCimXmlError, also when `target` has one of the classes already; `target` is left as it was.
void LoadNamespace(const std::string& path, TMemoryNamespace& target);

/// The same with a document that is in memory; `name` stands for its file in messages.
void LoadNamespace(const std::string& name, std::string_view text, TMemoryNamespace& target);

}  // namespace NVORHOST
