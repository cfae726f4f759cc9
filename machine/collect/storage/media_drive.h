// The record shared by the classes of drives: disks, diskettes, tapes and optical discs have the same
// properties.
#pragma once

#include "machine/collect/frame/cim_class.h"
#include "machine/collect/frame/operational_status.h"

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
};

inline constexpr TPropertyRow<TMediaDrive> mediaDriveRows[] = {
    {"ElementName", &TMediaDrive::elementName},
    {"Description", &TMediaDrive::description},
    {"DeviceID", &TMediaDrive::deviceId},
    {"OperationalStatus", &TMediaDrive::operationalStatus},
    {"DefaultBlockSize", &TMediaDrive::defaultBlockSizeBytes},
    {"LoadTime", TUnavailable{ECimType::eUint64}},
    {"MaxAccessTime", TUnavailable{ECimType::eUint64}},
    {"MaxBlockSize", &TMediaDrive::maxBlockSizeBytes},
    {"MaxMediaSize", &TMediaDrive::maxMediaSizeKB},
    {"MediaIsLocked", &TMediaDrive::mediaIsLocked},
    {"MinBlockSize", &TMediaDrive::minBlockSizeBytes},
    {"MountCount", &TMediaDrive::mountCount},
    {"NeedsCleaning", TUnavailable{ECimType::eBoolean}},
    {"TimeOfLastMount", TUnavailable{ECimType::eDateTime}},
    {"TotalMountTime", &TMediaDrive::totalMountTimeSeconds},
    {"UnloadTime", TUnavailable{ECimType::eUint64}},
};

/// Sets the sizes of a medium whose blocks all have one size. A property whose argument is absent stays
/// absent.
void SetFixedBlocks(std::optional<std::uint64_t> sizeBytes, std::optional<std::uint64_t> blockSizeBytes,
                    TMediaDrive& drive);

}  // namespace NVORHOST
