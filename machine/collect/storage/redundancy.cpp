#include "machine/collect/storage/redundancy.h"

#include "text/find_row.h"

#include <algorithm>

namespace NVORHOST {
namespace {

std::uint16_t SaturatingSubtract(std::uint32_t count, std::uint32_t lost) {
    return static_cast<std::uint16_t>(std::min(count > lost ? count - lost : 0U, std::uint32_t{UINT16_MAX}));
}

TRedundancy FindForStripes(const TArrayShape&) {
    return diskRedundancy;
}

TRedundancy FindForMirror(const TArrayShape& shape) {
    if (!shape.disks || !shape.degraded || *shape.degraded >= *shape.disks) {
        return {};
    }
    return {SaturatingSubtract(*shape.disks, *shape.degraded),
            SaturatingSubtract(*shape.disks, *shape.degraded + 1)};
}

template <std::uint32_t parities>
TRedundancy FindForParity(const TArrayShape& shape) {
    TRedundancy redundancy{std::uint16_t{1}, std::nullopt};
    if (shape.degraded) {
        redundancy.sparePackages = SaturatingSubtract(parities, *shape.degraded);
    }
    return redundancy;
}

// The copies lost with a missing disk depend on its position, so only a complete array has known counts.
TRedundancy FindForStripedMirror(const TArrayShape& shape) {
    if (!shape.layout || shape.degraded != 0U) {
        return {};
    }
    constexpr std::uint32_t byteMask = 0xFF;
    const std::uint32_t nearCopies = *shape.layout & byteMask;
    const std::uint32_t farCopies = (*shape.layout >> 8) & byteMask;
    const std::uint32_t copies = nearCopies * farCopies;
    return copies == 0 ? TRedundancy{}
                       : TRedundancy{SaturatingSubtract(copies, 0), SaturatingSubtract(copies, 1)};
}

struct TLevel {
    std::string_view name;
    TRedundancy (*find)(const TArrayShape& shape);
};

constexpr TLevel levels[] = {
    {"linear", FindForStripes},       {"raid0", FindForStripes},   {"raid1", FindForMirror},
    {"raid4", FindForParity<1>},      {"raid5", FindForParity<1>}, {"raid6", FindForParity<2>},
    {"raid10", FindForStripedMirror},
};

std::optional<std::uint16_t> MinIfBothKnown(std::optional<std::uint16_t> first,
                                            std::optional<std::uint16_t> second) {
    return first && second ? std::optional(std::min(*first, *second)) : std::nullopt;
}

}  // namespace

TRedundancy FindArrayRedundancy(const TArrayShape& shape) {
    const TLevel* level = FindRow(levels, &TLevel::name, shape.level);
    return level == nullptr ? TRedundancy{} : level->find(shape);
}

TRedundancy Weakest(const TRedundancy& first, const TRedundancy& second) {
    return {MinIfBothKnown(first.dataCopies, second.dataCopies),
            MinIfBothKnown(first.sparePackages, second.sparePackages)};
}

}  // namespace NVORHOST
