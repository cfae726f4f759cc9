#include "fleet/load/read_inventory.h"

#include "documents/document_error.h"
#include "fleet/load/timestamp.h"
#include "fleet/model/machine_traits.h"

#include <algorithm>
#include <numeric>
#include <tuple>
#include <utility>

namespace NFLEET {

using NVORHOST::TDocumentCause;

bool TInventoryBuilder::Add(std::string_view id, const std::shared_ptr<TCachedVersion>& version,
                            TIdentity identity, std::vector<TPlacedProperty> volatileProperties) {
    const TResourceKey key = keys_.Make(id, version->type, version->digest, identity);
    if (key.id) {
        return false;
    }
    AddPresence(key.resource, version, std::move(identity), std::move(volatileProperties));
    return true;
}

void TInventoryBuilder::Add(std::string_view id, TDivision division) {
    TVersion& version = division.version;
    TResourceKey key = keys_.Make(id, version.type, version.digest, division.identity);
    if (key.id) {
        version.id = std::move(key.id);
        version.digest = MakeVersionDigest(version);
    }
    AddPresence(key.resource, AddVersion(std::move(version), cache_), std::move(division.identity),
                std::move(division.volatileProperties));
}

void TInventoryBuilder::AddTraitsTo(const NINVENTORY::TResource& resource, TMachineTraits& traits) {
    AddTraits(resource, traits);
}

void TInventoryBuilder::AddPresence(const TDigest& resource, const std::shared_ptr<TCachedVersion>& version,
                                    TIdentity identity, std::vector<TPlacedProperty> volatileProperties) {
    if (read_.resources.size() >= maxResources) {
        throw TDocumentCause("has more than " + std::to_string(maxResources) + " resources");
    }
    TPresence& presence = read_.resources.emplace_back();
    presence.type = version->type;
    presence.resource = resource;
    presence.version = version->digest;
    presence.identity = std::move(identity);
    for (TPlacedProperty& placed : volatileProperties) {
        read_.inventory.volatileValues.push_back({resource, placed.position, std::move(placed.property)});
    }
    if (!version->isStored) {
        read_.versions.push_back(version);
    }
}

// Sorts numbers, which are cheaper to move than resources.
void TInventoryBuilder::SortResources() {
    std::vector<TPresence>& resources = read_.resources;
    std::vector<std::uint32_t> order(resources.size());
    std::iota(order.begin(), order.end(), 0U);
    std::ranges::sort(order, {}, [&](std::uint32_t i) -> const TDigest& { return resources[i].resource; });
    std::vector<TPresence> sorted;
    sorted.reserve(resources.size());
    for (const std::uint32_t i : order) {
        sorted.push_back(std::move(resources[i]));
    }
    resources = std::move(sorted);
}

TReadInventory TInventoryBuilder::Take(EScope scope, std::string_view timestamp) {
    const auto time = ParseTimestamp(timestamp);
    if (!time) {
        throw TDocumentCause(timestamp.empty() ? std::string("has no time")
                                               : "has the malformed time " + NVORHOST::Quote(timestamp));
    }
    read_.inventory.place.scope = scope;
    read_.inventory.time = *time;
    SortResources();
    read_.content = MakeContentDigest(read_.resources);
    return std::move(read_);
}

}  // namespace NFLEET
