// KELSG_DiskDrive and CIM_DiskDrive: one instance per disk. A physical disk is a KELSG_DiskDrive; a disk
// presented by a hypervisor, an emulator or a RAID adapter is a CIM_DiskDrive. Volumes of RAID adapters that
// have a class of their own are collected by logical_disk.cpp.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/storage/block_device.h"
#include "machine/collect/storage/disk_class.h"
#include "machine/collect/storage/disk_details.h"
#include "machine/collect/storage/media_drive.h"
#include "text/find_row.h"

#include <utility>

namespace NVORHOST {
namespace {

// Each source follows the name of the identity that it has.
constexpr char identitySources[] =
    "[Serial number] @/device/vpd_pg80; [Serial number] text @/device/serial; [Serial number] text "
    "@/serial; [Serial number] /sys/devices/**/serial; [Firmware revision] text @/device/rev; [Firmware "
    "revision] text @/device/firmware_rev; [Firmware revision] text @/device/fwrev; [Firmware revision] "
    "@udev ID_REVISION; [World-wide name] @/device/wwid; [World-wide name] @/wwid; [PCI function] @; [NVMe "
    "namespace] @/nsid; [ATA port] /sys/devices/**/ata_port/*/port_no; [SAS address] "
    "/sys/devices/**/sas_device/*/sas_address; [SAS phy] /sys/devices/**/sas_device/*/phy_identifier; [SAS "
    "enclosure] /sys/devices/**/sas_device/*/enclosure_identifier; [SAS bay] "
    "/sys/devices/**/sas_device/*/bay_identifier; [Enclosure] /sys/devices/**/enclosure/*/id; [Enclosure "
    "slot] @/device enclosure_device:*; [Enclosure slot number] /sys/devices/**/enclosure/*/*/slot; [USB "
    "port path] @";

// Properties of disks only. The documents do not have them.
constexpr TPropertyRow<TMediaDrive> virtualRows[] = {
    {"OtherIdentifyingInfo", &TMediaDrive::identities, identitySources},
    {"IdentifyingDescriptions", &TMediaDrive::identityDescriptions, "property OtherIdentifyingInfo"},
    {"PhysicalBlockSize", &TMediaDrive::physicalBlockSizeBytes, "number @/queue/physical_block_size"},
};
constexpr TPropertyRow<TMediaDrive> physicalRows[] = {
    {"OtherIdentifyingInfo", &TMediaDrive::identities, identitySources},
    {"IdentifyingDescriptions", &TMediaDrive::identityDescriptions, "property OtherIdentifyingInfo"},
    {"PhysicalBlockSize", &TMediaDrive::physicalBlockSizeBytes, "number @/queue/physical_block_size"},
    {"Media", &TMediaDrive::media, "@/device/vpd_pgb1; @/queue/rotational"},
    {"RotationRate", &TMediaDrive::rotationsPerMinute, "@/device/vpd_pgb1"},
};

constexpr auto mediaDriveRows = MakeMediaDriveRows({
    .name = "@/device/vendor; @/device/model; @/device/vpd_pg83; @/device/name",
    .description = "@/queue/rotational; @/removable; @/device/transport",
    .key = "@/wwid; @/device/wwid; @/device/vpd_pg80; @/device/serial; @/serial; @/device/cid; @",
    .status = "@/device/state",
    .blockSize = "number @/queue/logical_block_size",
    .otherBlockSizes = "property DefaultBlockSize",
    .mediaSize = "number @/size",
    .mediaState = "number @/removable",
});
constexpr auto virtualDiskRows = JoinRows(mediaDriveRows, virtualRows);
constexpr auto physicalDiskRows = JoinRows(mediaDriveRows, physicalRows);
constexpr TCimClass<TMediaDrive> physicalDiskClass{physicalDiskClassName, physicalDiskRows};
constexpr TCimClass<TMediaDrive> virtualDiskClass{virtualDiskClassName, virtualDiskRows};
constexpr const IClassDeclaration* classes[] = {&physicalDiskClass, &virtualDiskClass};

constexpr auto sourcePatterns = Join(diskSources, diskDetailSources);

// The kernel's default is "rotational", also for USB sticks and card readers, so it is ignored for removable
// media.
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
    const TCimClass<TMediaDrive>& cimClass;
    std::string_view (*describe)(const TDisk& disk);  // text after the transport's name
};

constexpr char virtualDisk[] = "virtual disk";
constexpr char networkDisk[] = "network disk";
constexpr char raidVolume[] = "RAID volume";

constexpr TBackingRow backingRows[] = {
    {EDiskBacking::physical, physicalDiskClass, DescribePhysical},
    {EDiskBacking::simulated, virtualDiskClass, DescribeAs<virtualDisk>},
    {EDiskBacking::remote, virtualDiskClass, DescribeAs<networkDisk>},
    {EDiskBacking::raidVolume, virtualDiskClass, DescribeAs<raidVolume>},
};

// CIM defines a medium that cannot be removed as locked and never mounted. For removable media sysfs has no
// state.
void SetMediaState(bool isRemovable, TMediaDrive& drive) {
    if (!isRemovable) {
        drive.mediaIsLocked = true;
        drive.mountCount = 0;
        drive.totalMountTimeSeconds = 0;
    }
}

void SetDetails(TDiskDetails details, TMediaDrive& drive) {
    drive.identities = std::move(details.identifying.values);
    drive.identityDescriptions = std::move(details.identifying.descriptions);
    drive.media = std::move(details.media);
    drive.rotationsPerMinute = details.rotationsPerMinute;
    drive.physicalBlockSizeBytes = details.physicalBlockSizeBytes;
}

TMediaDrive MakeDrive(const TDisk& disk, std::string_view words) {
    TMediaDrive drive;
    drive.place.folder = "/sys/block/" + disk.kernelName;
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

void CollectDiskDrives(TCollection& collection) {
    for (const TDisk& disk : GetDisks(collection)) {
        const TBackingRow* row = FindRow(backingRows, &TBackingRow::backing, disk.backing);
        if (row != nullptr && !IsLogicalDisk(disk)) {
            TMediaDrive drive = MakeDrive(disk, row->describe(disk));
            SetDetails(ReadDiskDetails(collection, disk), drive);
            collection.Commit(row->cimClass, drive);
        }
    }
}

}  // namespace

extern constinit const TCollector diskDriveCollector{
    .name = "disk",
    .description = "Disks, physical and virtual",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectDiskDrives,
};

}  // namespace NVORHOST
