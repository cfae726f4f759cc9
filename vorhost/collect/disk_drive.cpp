#include "vorhost/collect/disk_drive.h"

#include "vorhost/collect/collection.h"
#include "vorhost/collect/operational_status.h"

namespace NVORHOST {

namespace {

struct TDrive {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<TOperationalStatus> operationalStatus;
    std::optional<std::uint64_t> defaultBlockSizeBytes, maxBlockSizeBytes, minBlockSizeBytes, maxMediaSizeKB,
        mountCount, totalMountTimeSeconds;
    std::optional<bool> mediaIsLocked;
};

constexpr TPropertyRow<TDrive> driveRows[] = {
    {"ElementName", &TDrive::elementName},
    {"Description", &TDrive::description},
    {"DeviceID", &TDrive::deviceId},
    {"OperationalStatus", &TDrive::operationalStatus},
    {"DefaultBlockSize", &TDrive::defaultBlockSizeBytes},
    {"LoadTime", TNeverKnown{ECimType::eUint64}},
    {"MaxAccessTime", TNeverKnown{ECimType::eUint64}},
    {"MaxBlockSize", &TDrive::maxBlockSizeBytes},
    {"MaxMediaSize", &TDrive::maxMediaSizeKB},
    {"MediaIsLocked", &TDrive::mediaIsLocked},
    {"MinBlockSize", &TDrive::minBlockSizeBytes},
    {"MountCount", &TDrive::mountCount},
    {"NeedsCleaning", TNeverKnown{ECimType::eBoolean}},
    {"TimeOfLastMount", TNeverKnown{ECimType::eDateTime}},
    {"TotalMountTime", &TDrive::totalMountTimeSeconds},
    {"UnloadTime", TNeverKnown{ECimType::eUint64}},
};

constexpr TClassShape classes[] = {
    MakeShape<TDrive, driveRows>("KELSG_DiskDrive"),
    MakeShape<TDrive, driveRows>("CIM_DiskDrive"),
};

constexpr auto sourcePatterns = diskSources;

struct TBackingRow {
    EDiskBacking backing;
    const TClassShape& shape;
    std::string_view words;  // behind the transport's name
};

constexpr TBackingRow backingRows[] = {
    {EDiskBacking::physical, classes[0], "disk drive"},
    {EDiskBacking::simulated, classes[1], "virtual disk"},
    {EDiskBacking::raidVolume, classes[1], "RAID volume"},
};

// A medium that cannot be removed is locked in and was never mounted, says CIM; of others sysfs tells
// nothing.
void SetMediaState(bool isRemovable, TDrive& drive) {
    if (!isRemovable) {
        drive.mediaIsLocked = true;
        drive.mountCount = 0;
        drive.totalMountTimeSeconds = 0;
    }
}

TDrive MakeDrive(const TDisk& disk, std::string_view words) {
    constexpr std::uint64_t bytesInKB = 1000;  // by the schema's own text
    TDrive drive;
    drive.description = disk.transport + " " + std::string(words);
    drive.elementName = disk.model ? disk.model : drive.description;
    drive.deviceId = disk.key;
    drive.operationalStatus = disk.operationalStatus;
    drive.defaultBlockSizeBytes = disk.blockSizeBytes;
    drive.maxBlockSizeBytes = disk.blockSizeBytes;
    drive.minBlockSizeBytes = disk.blockSizeBytes;
    if (disk.sizeBytes) {
        drive.maxMediaSizeKB = *disk.sizeBytes / bytesInKB;
    }
    if (disk.isRemovable) {
        SetMediaState(*disk.isRemovable, drive);
    }
    return drive;
}

}  // namespace

std::span<const TClassShape> GetDiskDriveClasses() {
    return classes;
}

std::span<const TSourcePattern> GetDiskDriveSources() {
    return sourcePatterns;
}

void CollectDiskDrives(TCollection& collection) {
    for (const TDisk& disk : collection.GetDisks()) {
        for (const TBackingRow& row : backingRows) {
            if (row.backing == disk.backing) {
                collection.Commit<TDrive>(row.shape, driveRows, MakeDrive(disk, row.words));
            }
        }
    }
}

}  // namespace NVORHOST
