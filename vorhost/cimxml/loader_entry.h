// The function that the reader's module exports.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// The type of the exported symbol `loaderEntryName`. Calls `LoadNamespaceFromText`, or
/// `LoadNamespaceFromFile` if `text` is null.
using TLoaderEntry = void (*)(const std::string& name, const std::string_view* text,
                              TMemoryNamespace& target);

constexpr char loaderEntryName[] = "NVORHOST_LoadCimXml";

}  // namespace NVORHOST
