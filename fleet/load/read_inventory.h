// An inventory that was read and divided, ready to be stored.
#pragma once

#include "fleet/load/version_cache.h"
#include "fleet/model/division.h"
#include "fleet/model/machine_key.h"
#include "fleet/model/resource_key.h"
#include "fleet/model/rows.h"

#include <memory>
#include <string>
#include <vector>

namespace NFLEET {

struct TReadInventory {
    TInventory inventory;  ///< without machine, which follows from the traits
    TMachineTraits traits;
    TDigest content;
    std::vector<TPresence> resources;  ///< in order of their keys
    /// The versions that were not stored when they were read.
    std::vector<std::shared_ptr<TCachedVersion>> versions;
};

/// The greatest number of resources of an inventory: more than any machine has.
inline constexpr std::size_t maxResources = 2000000;

/// Puts an inventory together, resource by resource in the order of its document.
class TInventoryBuilder {
  public:
    explicit TInventoryBuilder(TVersionCache& cache) : cache_(cache) {}

    /// Adds a resource whose version is known by its content. Returns false if its key needs an identifier
    /// within the version, which only the division has; nothing is added then.
    bool Add(std::string_view id, const std::shared_ptr<TCachedVersion>& version, TIdentity identity,
             std::vector<TPlacedProperty> volatileProperties);
    /// Adds a divided resource. Errors: throws TDocumentCause for more than maxResources.
    void Add(std::string_view id, TDivision division);
    /// Adds what a resource contributes to the machine's traits.
    void AddTraitsOf(const NINVENTORY::TResource& resource) { AddTraitsTo(resource, read_.traits); }

    /// Returns the inventory. Errors: throws TDocumentCause for a time that is malformed or missing.
    TReadInventory Take(EScope scope, std::string_view timestamp);

  private:
    static void AddTraitsTo(const NINVENTORY::TResource& resource, TMachineTraits& traits);
    void SortResources();
    void AddPresence(const TDigest& resource, const std::shared_ptr<TCachedVersion>& version,
                     TIdentity identity, std::vector<TPlacedProperty> volatileProperties);

    TVersionCache& cache_;
    TResourceKeys keys_;
    TReadInventory read_;
};

}  // namespace NFLEET
