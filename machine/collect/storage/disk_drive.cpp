#include "machine/collect/storage/disk_drive.h"

#include "machine/collect/frame/collection.h"
#include "machine/collect/storage/media_drive.h"

namespace NVORHOST {

namespace {

constexpr TClassShape classes[] = {
    MakeShape<TMediaDrive, mediaDriveRows>("KELSG_DiskDrive"),
    MakeShape<TMediaDrive, mediaDriveRows>("CIM_DiskDrive"),
};

constexpr auto sourcePatterns = diskSources;

// Drives for removable media rotate by the kernel's default, sticks and card readers too.
std::string_view DescribePhysical(const TDisk& disk) {
    if (!disk.isRotational || (*disk.isRotational && disk.isRemovable.value_or(false))) {
        return "disk drive";
    }
    return *disk.isRotational ? "hard disk drive" : "solid-state drive";
}

template <const char* words>
std::string_view DescribeAs(const TDisk&) {
    return words;
}

struct TBackingRow {
    EDiskBacking backing;
    const TClassShape& shape;
    std::string_view (*describe)(const TDisk& disk);  // behind the transport's name
};

constexpr char virtualDisk[] = "virtual disk";
constexpr char networkDisk[] = "network disk";
constexpr char raidVolume[] = "RAID volume";

constexpr TBackingRow backingRows[] = {
    {EDiskBacking::physical, classes[0], DescribePhysical},
    {EDiskBacking::simulated, classes[1], DescribeAs<virtualDisk>},
    {EDiskBacking::remote, classes[1], DescribeAs<networkDisk>},
    {EDiskBacking::raidVolume, classes[1], DescribeAs<raidVolume>},
};

// A medium that cannot be removed is locked in and was never mounted, says CIM; of others sysfs tells
// nothing.
void SetMediaState(bool isRemovable, TMediaDrive& drive) {
    if (!isRemovable) {
        drive.mediaIsLocked = true;
        drive.mountCount = 0;
        drive.totalMountTimeSeconds = 0;
    }
}

TMediaDrive MakeDrive(const TDisk& disk, std::string_view words) {
    TMediaDrive drive;
    drive.description = disk.transport + " " + std::string(words);
    drive.elementName = disk.model ? disk.model : drive.description;
    drive.deviceId = disk.key;
    drive.operationalStatus = disk.operationalStatus;
    SetFixedBlocks(disk.sizeBytes, disk.blockSizeBytes, drive);
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
            if (row.backing == disk.backing && !IsLogicalDisk(disk)) {
                collection.Commit<TMediaDrive>(row.shape, mediaDriveRows,
                                               MakeDrive(disk, row.describe(disk)));
            }
        }
    }
}

}  // namespace NVORHOST
