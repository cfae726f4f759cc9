// The one function that the reader's module offers to the program that loads it.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// As `LoadNamespaceFromText` with a `text`, as `LoadNamespace` without; the exported symbol
/// `loaderEntryName` has this type.
using TLoaderEntry = void (*)(const std::string& name, const std::string_view* text,
                              TMemoryNamespace& target);

constexpr char loaderEntryName[] = "NVORHOST_LoadCimXml";

}  // namespace NVORHOST
