// Logical disks: one KELSG_LogicalDisk per software volume; one KELSG_LSILogicalDisk, KELSG_LSIIDELogicalDisk
// or KELSG_srLogicalDisk per volume of a RAID adapter, by the family of the adapter, and a KELSG_srDiskGroup
// besides each KELSG_srLogicalDisk.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/storage/block_device.h"
#include "machine/collect/storage/disk_class.h"
#include "machine/collect/storage/software_volume.h"
#include "text/find_row.h"

namespace NVORHOST {
namespace {

struct TLogicalDisk {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<TOperationalStatus> operationalStatus;
    std::optional<std::uint64_t> blockSizeBytes, consumableBlocks, numberOfBlocks;
    std::optional<std::uint16_t> dataOrganization, dataRedundancy, packageRedundancy;
    std::optional<bool> sequentialAccess;
    TInstancePlace place{};
};

constexpr TPropertyRow<TLogicalDisk> logicalDiskRows[] = {
    {"ElementName", &TLogicalDisk::elementName, "@/dm/name; @; @/device/vendor; @/device/model"},
    {"Description", &TLogicalDisk::description, "@/md/level; @/dm/uuid; @/device/raid_level"},
    {"DeviceID", &TLogicalDisk::deviceId, "@/md/uuid; @/dm/uuid; @udev MD_UUID; @/device/wwid"},
    {"OperationalStatus", &TLogicalDisk::operationalStatus,
     "@/md/array_state; @/md/degraded; @/md/sync_action; /sys/class/raid_devices/**; @/device/state"},
    {"BlockSize", &TLogicalDisk::blockSizeBytes, "number @/queue/logical_block_size"},
    {"ConsumableBlocks", &TLogicalDisk::consumableBlocks, "property NumberOfBlocks"},
    {"DataOrganization", &TLogicalDisk::dataOrganization, "constant"},
    {"DataRedundancy", &TLogicalDisk::dataRedundancy,
     "@/md/level; @/md/raid_disks; @/md/layout; /sys/class/raid_devices/**"},
    {"DeltaReservation", TUnavailable{ECimType::eUint8}, "none: not kept by Linux"},
    {"NumberOfBlocks", &TLogicalDisk::numberOfBlocks, "number @/size; property BlockSize"},
    {"PackageRedundancy", &TLogicalDisk::packageRedundancy,
     "@/md/level; @/md/raid_disks; @/md/degraded; /sys/class/raid_devices/**"},
    {"SequentialAccess", &TLogicalDisk::sequentialAccess, "constant"},
};

struct TDiskGroup {
    std::optional<std::string> elementName, description, collectionId, tag;
    TInstancePlace place{};
};

constexpr TPropertyRow<TDiskGroup> diskGroupRows[] = {
    {"ElementName", &TDiskGroup::elementName, "@/device/vendor; @/device/model"},
    {"Description", &TDiskGroup::description, "constant"},
    {"CollectionID", &TDiskGroup::collectionId, "@/device/wwid"},
    {"Tag", &TDiskGroup::tag, "@/device/wwid"},
};

constexpr TCimClass<TLogicalDisk> lsiDiskClass{lsiDiskClassName, logicalDiskRows};
constexpr TCimClass<TLogicalDisk> lsiIdeDiskClass{lsiIdeDiskClassName, logicalDiskRows};
constexpr TCimClass<TLogicalDisk> srDiskClass{srDiskClassName, logicalDiskRows};
constexpr TCimClass<TLogicalDisk> softwareDiskClass{softwareVolumeClassName, logicalDiskRows};
constexpr TCimClass<TDiskGroup> diskGroupClass{"KELSG_srDiskGroup", diskGroupRows};
constexpr const IClassDeclaration* classes[] = {&lsiDiskClass, &lsiIdeDiskClass, &srDiskClass,
                                                &softwareDiskClass, &diskGroupClass};

constexpr auto sourcePatterns = Join(diskSources, softwareVolumeSources);

// The adapter hides the member disks, so a group is described by its volume only.
void CommitDiskGroup(TCollection& collection, const TDisk& disk) {
    TDiskGroup group;
    group.place.folder = "/sys/block/" + disk.kernelName;
    group.elementName = "Disks of " + disk.model.value_or("RAID volume");
    group.description = "Disks that a RAID adapter makes one volume of";
    group.collectionId = disk.key;
    group.tag = disk.key;
    collection.Commit(diskGroupClass, group);
}

struct TFamilyRow {
    ERaidFamily family;
    const TCimClass<TLogicalDisk>& cimClass;
    void (*commitGroup)(TCollection& collection, const TDisk& disk);
};

constexpr TFamilyRow familyRows[] = {
    {ERaidFamily::lsi, lsiDiskClass, nullptr},
    {ERaidFamily::lsiIde, lsiIdeDiskClass, nullptr},
    {ERaidFamily::sr, srDiskClass, CommitDiskGroup},
};

// TVolume is TDisk or TSoftwareVolume, whose members used here have the same names.
template <typename TVolume>
TLogicalDisk MakeLogicalDisk(const TVolume& volume) {
    constexpr std::uint16_t fixedBlock = 2;
    TLogicalDisk logical;
    logical.place.folder = "/sys/block/" + volume.kernelName;
    logical.deviceId = volume.key;
    logical.operationalStatus = volume.operationalStatus;
    logical.blockSizeBytes = volume.blockSizeBytes;
    if (volume.sizeBytes && volume.blockSizeBytes.value_or(0) != 0) {
        logical.numberOfBlocks = *volume.sizeBytes / *volume.blockSizeBytes;
        logical.consumableBlocks = logical.numberOfBlocks;
    }
    logical.dataOrganization = fixedBlock;
    logical.dataRedundancy = volume.redundancy.dataCopies;
    logical.packageRedundancy = volume.redundancy.sparePackages;
    logical.sequentialAccess = false;
    return logical;
}

void CommitVolume(TCollection& collection, const TDisk& disk) {
    const TFamilyRow* row = FindRow(familyRows, &TFamilyRow::family, disk.raidFamily);
    if (row == nullptr) {
        return;
    }
    TLogicalDisk logical = MakeLogicalDisk(disk);
    logical.description = disk.transport + " RAID volume";
    logical.elementName = disk.model ? disk.model : logical.description;
    collection.Commit(row->cimClass, logical);
    if (row->commitGroup != nullptr) {
        row->commitGroup(collection, disk);
    }
}

void CollectLogicalDisks(TCollection& collection) {
    for (const TDisk& disk : GetDisks(collection)) {
        CommitVolume(collection, disk);
    }
    for (const TSoftwareVolume& volume : GetSoftwareVolumes(collection)) {
        if (!volume.isLogicalDisk) {
            continue;
        }
        TLogicalDisk logical = MakeLogicalDisk(volume);
        logical.elementName = volume.name;
        logical.description = volume.description;
        collection.Commit(softwareDiskClass, logical);
    }
}

}  // namespace

extern constinit const TCollector logicalDiskCollector{
    .name = "logical-disk",
    .description = "Volumes of md, LVM, multipath, encryption and RAID adapters",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectLogicalDisks,
};

}  // namespace NVORHOST
