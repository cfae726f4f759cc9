// A resource divided into what is stored once, what identifies it, and what changes by itself.
#pragma once

#include "fleet/model/rows.h"
#include "inventory/model/resource.h"

#include <span>
#include <vector>

namespace NFLEET {

/// A volatile property and its index in the resource.
struct TPlacedProperty {
    std::uint32_t position = 0;
    NINVENTORY::TProperty property;

    bool operator==(const TPlacedProperty&) const = default;
};

struct TDivision {
    TVersion version;  ///< without identifier
    TIdentity identity;
    std::vector<TPlacedProperty> volatileProperties;

    bool operator==(const TDivision&) const = default;
};

/// Divides a resource. The result depends on the resource alone.
TDivision DivideResource(const NINVENTORY::TResource& resource);

/// Returns the digest of a version's other members.
TDigest MakeVersionDigest(const TVersion& version);

/// Returns the digest of what an inventory contains apart from volatile values. `resources` are in order of
/// their keys; places and times are left out.
TDigest MakeContentDigest(std::span<const TPresence> resources);

}  // namespace NFLEET
