// The record shared by the classes of memory address ranges: KELSG_ACPI and KELSG_MAS.
#pragma once

#include "machine/collect/frame/cim_class.h"
#include "machine/collect/frame/instance_place.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

struct TMemoryRange {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<std::uint64_t> blockSizeBytes, consumableBlocks, blocks, endKiB, startKiB;
    std::optional<bool> isSequential, isVolatile;
    TInstancePlace place{};
};

/// Where the values of a class of ranges come from.
struct TMemoryRangeSources {
    TValueSources start, end, kind;
};

constexpr auto MakeMemoryRangeRows(const TMemoryRangeSources& sources) {
    using TRow = TPropertyRow<TMemoryRange>;
    return std::array{
        TRow{"ElementName", &TMemoryRange::elementName, sources.kind},
        TRow{"Description", &TMemoryRange::description, sources.kind},
        TRow{"DeviceID", &TMemoryRange::deviceId, sources.start},
        TRow{"BlockSize", &TMemoryRange::blockSizeBytes, "constant"},
        TRow{"ConsumableBlocks", &TMemoryRange::consumableBlocks, sources.kind},
        TRow{"DataOrganization", TUnavailable{ECimType::eUint16}, "none: not a notion of memory"},
        TRow{"DataRedundancy", TUnavailable{ECimType::eUint16}, "none: mirroring is not shown"},
        TRow{"DeltaReservation", TUnavailable{ECimType::eUint8}, "none: not a notion of memory"},
        TRow{"NumberOfBlocks", &TMemoryRange::blocks, sources.end},
        TRow{"PackageRedundancy", TUnavailable{ECimType::eUint16}, "none: mirroring is not shown"},
        TRow{"SequentialAccess", &TMemoryRange::isSequential, "constant"},
        TRow{"EndingAddress", &TMemoryRange::endKiB, sources.end},
        TRow{"StartingAddress", &TMemoryRange::startKiB, sources.start},
        TRow{"Volatile", &TMemoryRange::isVolatile, sources.kind},
    };
}

/// Returns the record of the addresses from `first` to `last`, inclusive: ElementName is `name` and the
/// addresses; the blocks are single bytes. The remaining members are absent.
TMemoryRange MakeMemoryRange(const std::string& name, std::uint64_t first, std::uint64_t last);

/// Formats an address with leading zeros, so that keys sort by address.
std::string FormatKeyAddress(std::uint64_t address);

}  // namespace NVORHOST
