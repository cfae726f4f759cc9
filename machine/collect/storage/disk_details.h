// Details that identify a disk and its place, beyond the properties that drives of all kinds share.
#pragma once

#include "machine/collect/frame/identifying_info.h"
#include "machine/collect/frame/source_patterns.h"
#include "machine/collect/storage/block_device.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

class TCollection;

struct TDiskDetails {
    /// Serial number, firmware revision, world-wide name and place.
    TIdentifyingInfo identifying;
    /// "rotating" or "solid state"; absent for virtual disks, removable media and unknown ones.
    std::optional<std::string> media;
    std::optional<std::uint32_t> rotationsPerMinute;
    std::optional<std::uint64_t> physicalBlockSizeBytes;
};

/// Reads the details of one of the disks of GetDisks.
TDiskDetails ReadDiskDetails(TCollection& collection, const TDisk& disk);

/// The paths that ReadDiskDetails may access besides diskSources.
inline constexpr std::array<TSourcePattern, 9> diskDetailSources{
    "/run/udev/data/b*",
    "/sys/block/*/device",
    "/sys/block/*/device/enclosure_device:*",
    "/sys/block/*/queue/physical_block_size",
    "/sys/devices/**/enclosure/*/id",
    "/sys/devices/**/enclosure/*/*/slot",
    "/sys/devices/**/sas_device/*/bay_identifier",
    "/sys/devices/**/sas_device/*/enclosure_identifier",
    "/sys/devices/**/sas_device/*/phy_identifier",
};

}  // namespace NVORHOST
