// The list of collectors.
#pragma once

#include "machine/collect/frame/collector.h"

#include <span>
#include <string>
#include <vector>

namespace NVORHOST {

/// Every collector, in the order in which they run and in which their classes enter the namespace.
std::span<const TCollector> GetCollectors();

/// Selects collectors by name. Unknown names are ignored.
struct TCollectorChoice {
    std::vector<std::string> only;       ///< empty: every collector that is not opt-in
    std::vector<std::string> skip;       ///< wins over `only`
    bool withProcesses = false;          ///< adds the opt-in collectors
    bool documentsOnly = false;          ///< if `only` is empty: only collectors that the documents need
    std::vector<TCollector> extra = {};  ///< collectors of the caller, which run after the others
};

/// The selected collectors in the order of GetCollectors, and then those of the caller. An opt-in collector
/// also runs if `only` names it.
std::vector<TCollector> ChooseCollectors(const TCollectorChoice& choice);

}  // namespace NVORHOST
