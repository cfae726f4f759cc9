// The one function that the reader's module offers to the program that loads it.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <string>

namespace NVORHOST {

/// As `LoadNamespace`; the exported symbol `loaderEntryName` has this type.
using TLoaderEntry = void (*)(const std::string& path, TMemoryNamespace& target);

constexpr char loaderEntryName[] = "NVORHOST_LoadCimXmlFile";

}  // namespace NVORHOST
