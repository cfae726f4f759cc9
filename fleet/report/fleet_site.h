// A fleet as a static site: an overview, a page for each machine, model and day, and lists.
#pragma once

#include "fleet/report/site_files.h"
#include "fleet/store/fleet_store.h"

#include <optional>

namespace NFLEET {

struct TSiteOptions {
    std::optional<TSeconds> now{};  ///< what ages are counted from; absent for the newest inventory
    unsigned threads = 1;           ///< that write pages of machines
};

/// Writes the site; the same files for the same inventories, with any engine and number of threads. The
/// overview is written last.
/// Memory: a few facts about each machine and part; all resources of a few machines only.
/// Errors: throws TStoreError, and what `files` throws.
void WriteFleetSite(IFleetStore& store, const TSiteOptions& options, ISiteFiles& files);

}  // namespace NFLEET
