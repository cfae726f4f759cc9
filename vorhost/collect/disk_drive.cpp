#include "vorhost/collect/disk_drive.h"

#include "vorhost/collect/collection.h"
#include "vorhost/collect/media_drive.h"

namespace NVORHOST {

namespace {

constexpr TClassShape classes[] = {
    MakeShape<TMediaDrive, mediaDriveRows>("KELSG_DiskDrive"),
    MakeShape<TMediaDrive, mediaDriveRows>("CIM_DiskDrive"),
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
                collection.Commit<TMediaDrive>(row.shape, mediaDriveRows, MakeDrive(disk, row.words));
            }
        }
    }
}

}  // namespace NVORHOST
