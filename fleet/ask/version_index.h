// Versions of resources, read from a store in few queries.
#pragma once

#include "fleet/store/fleet_store.h"
#include "inventory/model/resource.h"

#include <unordered_map>
#include <vector>

namespace NFLEET {

/// The versions that some rows refer to.
class TVersionIndex {
  public:
    /// Reads the versions of `rows`.
    TVersionIndex(IFleetStore& store, const std::vector<TPresence>& rows);
    /// Reads the counted versions.
    TVersionIndex(IFleetStore& store, const std::vector<TVersionCount>& counts);

    /// Returns a version; null if the store has lost it.
    const TVersion* Find(const TDigest& digest) const;
    /// Returns the resource of a row without volatile values; one without properties if the store has lost
    /// the version.
    NINVENTORY::TResource Assemble(const TPresence& row) const;

  private:
    void Read(IFleetStore& store, std::vector<TDigest> digests);

    std::unordered_map<TDigest, TVersion, TDigestHash> versions_;
};

}  // namespace NFLEET
