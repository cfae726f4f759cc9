// Reads a namespace from CIM-XML (DSP0201 2.x elements, as DSP0203 declares them).
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <cstdint>
#include <stdexcept>
#include <string>

namespace NVORHOST {

/// A document that cannot be read. The message is one line: "FILE:LINE: class C, property P: cause", with the
/// parts that are known.
class TCimXmlError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Reads the file and adds its classes and instances to `target`. See docs/namespace-format.md for what is
/// read. Errors: throws TCimXmlError; `target` is left as it was.
void LoadNamespace(const std::string& path, TMemoryNamespace& target);

}  // namespace NVORHOST
