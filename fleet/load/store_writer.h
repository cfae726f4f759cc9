// Writes inventories that were read to a store, batch by batch.
#pragma once

#include "fleet/load/load.h"
#include "fleet/load/read_inventory.h"
#include "fleet/store/fleet_store.h"

#include <cstdint>
#include <set>
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

    /// Writes one batch, in which inventories may be in any order. Errors: throws TStoreError.
    TWritten Write(std::vector<TReadInventory> inventories);

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
