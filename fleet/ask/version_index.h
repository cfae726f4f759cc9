// Versions of resources, read from a store in few queries.
#pragma once

#include "fleet/store/fleet_store.h"
#include "inventory/model/resource.h"

#include <memory>
#include <unordered_map>
#include <vector>

namespace NFLEET {

/// The versions that some rows refer to. Several threads may read one index.
class TVersionIndex {
  public:
    /// Reads the versions of `rows`.
    TVersionIndex(IFleetStore& store, const std::vector<TPresence>& rows);
    /// Reads the versions of `rows` that `known` does not have; shares the others.
    TVersionIndex(IFleetStore& store, const std::vector<TPresence>& rows, const TVersionIndex& known);
    /// Reads the counted versions.
    TVersionIndex(IFleetStore& store, const std::vector<TVersionCount>& counts);
    TVersionIndex() = default;

    /// Returns a version; null if the store has lost it.
    const TVersion* Find(const TDigest& digest) const;
    /// Returns the resource of a row without volatile values; one without properties if the store has lost
    /// the version.
    NINVENTORY::TResource Assemble(const TPresence& row) const;
    /// Adds the versions of another index, which both then share.
    void Add(const TVersionIndex& other) { versions_.insert(other.versions_.begin(), other.versions_.end()); }
    std::size_t GetSize() const { return versions_.size(); }

  private:
    void Read(IFleetStore& store, std::vector<TDigest> digests);

    std::unordered_map<TDigest, std::shared_ptr<const TVersion>, TDigestHash> versions_;
};

}  // namespace NFLEET
