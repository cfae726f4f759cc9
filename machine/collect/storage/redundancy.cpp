#include "machine/collect/storage/redundancy.h"

#include <algorithm>

namespace NVORHOST {
namespace {

std::uint16_t Without(std::uint32_t count, std::uint32_t lost) {
    return static_cast<std::uint16_t>(std::min(count > lost ? count - lost : 0U, std::uint32_t{UINT16_MAX}));
}

TRedundancy OfStripes(const TArrayShape&) {
    return diskRedundancy;
}

TRedundancy OfMirror(const TArrayShape& shape) {
    if (!shape.disks || !shape.degraded || *shape.degraded >= *shape.disks) {
        return {};
    }
    return {Without(*shape.disks, *shape.degraded), Without(*shape.disks, *shape.degraded + 1)};
}

template <std::uint32_t parities>
TRedundancy OfParity(const TArrayShape& shape) {
    TRedundancy redundancy{std::uint16_t{1}, std::nullopt};
    if (shape.degraded) {
        redundancy.sparePackages = Without(parities, *shape.degraded);
    }
    return redundancy;
}

// Which copies a missing disk took along depends on which disk it is.
TRedundancy OfStripedMirror(const TArrayShape& shape) {
    if (!shape.layout || shape.degraded != 0U) {
        return {};
    }
    constexpr std::uint32_t byteMask = 0xFF;
    const std::uint32_t nearCopies = *shape.layout & byteMask;
    const std::uint32_t farCopies = (*shape.layout >> 8) & byteMask;
    const std::uint32_t copies = nearCopies * farCopies;
    return copies == 0 ? TRedundancy{} : TRedundancy{Without(copies, 0), Without(copies, 1)};
}

struct TLevel {
    std::string_view name;
    TRedundancy (*find)(const TArrayShape& shape);
};

constexpr TLevel levels[] = {
    {"linear", OfStripes},  {"raid0", OfStripes},   {"raid1", OfMirror},         {"raid4", OfParity<1>},
    {"raid5", OfParity<1>}, {"raid6", OfParity<2>}, {"raid10", OfStripedMirror},
};

std::optional<std::uint16_t> Lower(std::optional<std::uint16_t> first, std::optional<std::uint16_t> second) {
    return first && second ? std::optional(std::min(*first, *second)) : std::nullopt;
}

}  // namespace

TRedundancy FindArrayRedundancy(const TArrayShape& shape) {
    for (const TLevel& level : levels) {
        if (level.name == shape.level) {
            return level.find(shape);
        }
    }
    return {};
}

TRedundancy Weakest(const TRedundancy& first, const TRedundancy& second) {
    return {Lower(first.dataCopies, second.dataCopies), Lower(first.sparePackages, second.sparePackages)};
}

}  // namespace NVORHOST
