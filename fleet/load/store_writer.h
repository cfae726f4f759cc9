// Writes inventories that were read to a store, batch by batch.
#pragma once

#include "fleet/load/load.h"
#include "fleet/load/read_inventory.h"
#include "fleet/store/fleet_store.h"

#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace NFLEET {

class TStoreWriter {
  public:
    /// All must outlive this object. `now` is the time after which inventories are reported.
    TStoreWriter(IFleetStore& store, ILoadEvents& events, TSeconds now)
        : store_(store), events_(events), now_(now) {}

    struct TWritten {
        std::uint64_t inventories = 0;
        std::uint64_t known = 0;
    };

    /// Writes one batch, in which inventories may be in any order. With it, and with those before, everything
    /// of the sources is stored. Errors: throws TStoreError.
    TWritten Write(std::vector<TReadInventory> inventories, std::vector<TSource> sources);

    /// Returns the sources that are stored at these places. Errors: throws TStoreError.
    std::vector<TSource> FindSources(std::span<const std::uint64_t> places) {
        return store_.FindSources(places);
    }

    /// Reports machines that share a UUID, if one of them was new. Errors: throws TStoreError.
    void ReportSharedUuids();

  private:
    void ReportFuture(const std::vector<TReadInventory>& inventories);

    IFleetStore& store_;
    ILoadEvents& events_;
    TSeconds now_;
    std::set<std::string> newUuids_;
};

}  // namespace NFLEET
