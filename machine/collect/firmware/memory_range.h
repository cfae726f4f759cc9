// The record shared by the classes of memory address ranges: KELSG_ACPI and KELSG_MAS.
#pragma once

#include "machine/collect/frame/cim_class.h"

#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

struct TMemoryRange {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<std::uint64_t> blockSizeBytes, consumableBlocks, blocks, endKiB, startKiB;
    std::optional<bool> isSequential, isVolatile;
};

inline constexpr TPropertyRow<TMemoryRange> memoryRangeRows[] = {
    {"ElementName", &TMemoryRange::elementName},
    {"Description", &TMemoryRange::description},
    {"DeviceID", &TMemoryRange::deviceId},
    {"BlockSize", &TMemoryRange::blockSizeBytes},
    {"ConsumableBlocks", &TMemoryRange::consumableBlocks},
    {"DataOrganization", TUnavailable{ECimType::eUint16}},
    {"DataRedundancy", TUnavailable{ECimType::eUint16}},
    {"DeltaReservation", TUnavailable{ECimType::eUint8}},
    {"NumberOfBlocks", &TMemoryRange::blocks},
    {"PackageRedundancy", TUnavailable{ECimType::eUint16}},
    {"SequentialAccess", &TMemoryRange::isSequential},
    {"EndingAddress", &TMemoryRange::endKiB},
    {"StartingAddress", &TMemoryRange::startKiB},
    {"Volatile", &TMemoryRange::isVolatile},
};

/// Returns the record of the addresses from `first` to `last`, inclusive: ElementName is `name` and the
/// addresses; the blocks are single bytes. The remaining members are absent.
TMemoryRange MakeMemoryRange(const std::string& name, std::uint64_t first, std::uint64_t last);

/// Formats an address with leading zeros, so that keys sort by address.
std::string FormatKeyAddress(std::uint64_t address);

}  // namespace NVORHOST
