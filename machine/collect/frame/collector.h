// A collector is one value: its name, the classes that it fills, the paths that it reads and its function.
#pragma once

#include "machine/collect/frame/cim_class.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>
#include <string_view>

namespace NVORHOST {

class TCollection;

/// Defined as `extern constinit const` in the source file of the collector and listed in run/collectors.cpp.
struct TCollector {
    std::string_view name;                            ///< as in listings and options: "processor"
    std::string_view description;                     ///< one line for listings
    std::span<const IClassDeclaration* const> fills;  ///< classes of its instances, declared before it runs
    std::span<const TSourcePattern> reads;            ///< every path that it may access
    void (*collect)(TCollection& collection);
    bool isOptIn = false;        ///< runs only if it is requested by name
    bool isForDocuments = true;  ///< false if no document contains any of its instances
};

}  // namespace NVORHOST
