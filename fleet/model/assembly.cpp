#include "fleet/model/assembly.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace NFLEET {

NINVENTORY::TResource AssembleResource(const TPresence& presence, const TVersion& version) {
    NINVENTORY::TResource resource;
    resource.id = version.id.value_or(ToText(presence.resource));
    resource.type = version.type;
    resource.list = version.list;
    auto identity = presence.identity.begin();
    for (const TVersionProperty& stored : version.properties) {
        resource.properties.push_back(stored.property);
        if (stored.isIdentifying && identity != presence.identity.end()) {
            resource.properties.back().values = *identity++;
        }
    }
    return resource;
}

void AddVolatileValues(std::span<const TVolatileValue> values, const TDigest& resource,
                       NINVENTORY::TResource& target) {
    for (const TVolatileValue& value : values) {
        if (value.resource == resource) {
            const std::size_t at = std::min<std::size_t>(value.position, target.properties.size());
            target.properties.insert(std::next(target.properties.begin(), static_cast<std::ptrdiff_t>(at)),
                                     value.property);
        }
    }
}

}  // namespace NFLEET
