#include "fleet/load/divided_resources.h"

#include "fleet/model/division.h"
#include "fleet/model/machine_traits.h"
#include "fleet/model/property_part.h"

namespace NFLEET {
namespace {

using NINVENTORY::EDocument;

EScope GetScope(EDocument kind) {
    switch (kind) {
        case EDocument::hardware:
            return EScope::hardware;
        case EDocument::systemInformation:
            return EScope::systemInformation;
        case EDocument::collection:
            return EScope::snapshot;
    }
    return EScope::snapshot;
}

}  // namespace

void TDividedResources::AddResource(NINVENTORY::TResource&& resource) {
    if (!IsStoredType(resource.type)) {
        return;
    }
    if (HasTraits(resource.type)) {
        builder_.AddTraitsOf(resource);
    }
    builder_.Add(resource.id, DivideResource(resource));
}

TReadInventory TDividedResources::Take() {
    return builder_.Take(GetScope(head_.kind), head_.timestamp);
}

}  // namespace NFLEET
