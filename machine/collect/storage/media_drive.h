// The record shared by the classes of drives: disks, diskettes, tapes and optical discs have the same
// properties.
#pragma once

#include "machine/collect/frame/cim_class.h"
#include "machine/collect/frame/instance_place.h"
#include "machine/collect/frame/operational_status.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

struct TMediaDrive {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<TOperationalStatus> operationalStatus;
    std::optional<std::uint64_t> defaultBlockSizeBytes, maxBlockSizeBytes, minBlockSizeBytes, maxMediaSizeKB,
        mountCount, totalMountTimeSeconds;
    std::optional<bool> mediaIsLocked;
    // Disks only.
    std::optional<std::vector<std::string>> identities, identityDescriptions;
    std::optional<std::string> media;
    std::optional<std::uint32_t> rotationsPerMinute;
    std::optional<std::uint64_t> physicalBlockSizeBytes;
    TInstancePlace place{};
};

/// Where the values of a class of drives come from.
struct TMediaDriveSources {
    TValueSources name, description, key, status, blockSize;
    TValueSources otherBlockSizes;  ///< MinBlockSize and MaxBlockSize
    TValueSources mediaSize;
    TValueSources mediaState;  ///< MediaIsLocked, MountCount and TotalMountTime
};

constexpr auto MakeMediaDriveRows(const TMediaDriveSources& sources) {
    using TRow = TPropertyRow<TMediaDrive>;
    constexpr TValueSources notExported = "none: not exported by the kernel without opening the device";
    return std::array{
        TRow{"ElementName", &TMediaDrive::elementName, sources.name},
        TRow{"Description", &TMediaDrive::description, sources.description},
        TRow{"DeviceID", &TMediaDrive::deviceId, sources.key},
        TRow{"OperationalStatus", &TMediaDrive::operationalStatus, sources.status},
        TRow{"DefaultBlockSize", &TMediaDrive::defaultBlockSizeBytes, sources.blockSize},
        TRow{"LoadTime", TUnavailable{ECimType::eUint64}, notExported},
        TRow{"MaxAccessTime", TUnavailable{ECimType::eUint64}, notExported},
        TRow{"MaxBlockSize", &TMediaDrive::maxBlockSizeBytes, sources.otherBlockSizes},
        TRow{"MaxMediaSize", &TMediaDrive::maxMediaSizeKB, sources.mediaSize},
        TRow{"MediaIsLocked", &TMediaDrive::mediaIsLocked, sources.mediaState},
        TRow{"MinBlockSize", &TMediaDrive::minBlockSizeBytes, sources.otherBlockSizes},
        TRow{"MountCount", &TMediaDrive::mountCount, sources.mediaState},
        TRow{"NeedsCleaning", TUnavailable{ECimType::eBoolean}, notExported},
        TRow{"TimeOfLastMount", TUnavailable{ECimType::eDateTime},
             "none: does not apply to fixed media, not kept for others"},
        TRow{"TotalMountTime", &TMediaDrive::totalMountTimeSeconds, sources.mediaState},
        TRow{"UnloadTime", TUnavailable{ECimType::eUint64}, notExported},
    };
}

/// Sets the sizes of a medium whose blocks all have one size. A property whose argument is absent stays
/// absent.
void SetFixedBlocks(std::optional<std::uint64_t> sizeBytes, std::optional<std::uint64_t> blockSizeBytes,
                    TMediaDrive& drive);

}  // namespace NVORHOST
