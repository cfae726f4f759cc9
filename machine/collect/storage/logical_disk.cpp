#include "machine/collect/storage/logical_disk.h"

#include "machine/collect/frame/collection.h"

namespace NVORHOST {

namespace {

struct TLogicalDisk {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<TOperationalStatus> operationalStatus;
    std::optional<std::uint64_t> blockSizeBytes, consumableBlocks, numberOfBlocks;
    std::optional<std::uint16_t> dataOrganization, dataRedundancy, packageRedundancy;
    std::optional<bool> sequentialAccess;
};

constexpr TPropertyRow<TLogicalDisk> logicalDiskRows[] = {
    {"ElementName", &TLogicalDisk::elementName},
    {"Description", &TLogicalDisk::description},
    {"DeviceID", &TLogicalDisk::deviceId},
    {"OperationalStatus", &TLogicalDisk::operationalStatus},
    {"BlockSize", &TLogicalDisk::blockSizeBytes},
    {"ConsumableBlocks", &TLogicalDisk::consumableBlocks},
    {"DataOrganization", &TLogicalDisk::dataOrganization},
    {"DataRedundancy", &TLogicalDisk::dataRedundancy},
    {"DeltaReservation", TNeverKnown{ECimType::eUint8}},
    {"NumberOfBlocks", &TLogicalDisk::numberOfBlocks},
    {"PackageRedundancy", &TLogicalDisk::packageRedundancy},
    {"SequentialAccess", &TLogicalDisk::sequentialAccess},
};

struct TDiskGroup {
    std::optional<std::string> elementName, description, collectionId, tag;
};

constexpr TPropertyRow<TDiskGroup> diskGroupRows[] = {
    {"ElementName", &TDiskGroup::elementName},
    {"Description", &TDiskGroup::description},
    {"CollectionID", &TDiskGroup::collectionId},
    {"Tag", &TDiskGroup::tag},
};

constexpr TClassShape classes[] = {
    MakeShape<TLogicalDisk, logicalDiskRows>("KELSG_LSILogicalDisk"),
    MakeShape<TLogicalDisk, logicalDiskRows>("KELSG_LSIIDELogicalDisk"),
    MakeShape<TLogicalDisk, logicalDiskRows>("KELSG_srLogicalDisk"),
    MakeShape<TLogicalDisk, logicalDiskRows>("KELSG_LogicalDisk"),
    MakeShape<TDiskGroup, diskGroupRows>("KELSG_srDiskGroup"),
};

constexpr auto sourcePatterns = Join(diskSources, softwareVolumeSources);

constexpr const TClassShape& softwareShape = classes[3];
constexpr const TClassShape& diskGroupShape = classes[4];

// The members are behind the adapter and out of sight: all that is known of a group is the volume that it
// makes up.
void CommitDiskGroup(TCollection& collection, const TDisk& disk) {
    TDiskGroup group;
    group.elementName = "Disks of " + disk.model.value_or("RAID volume");
    group.description = "Disks that a RAID adapter makes one volume of";
    group.collectionId = disk.key;
    group.tag = disk.key;
    collection.Commit<TDiskGroup>(diskGroupShape, diskGroupRows, group);
}

struct TFamilyRow {
    ERaidFamily family;
    const TClassShape& shape;
    void (*commitGroup)(TCollection& collection, const TDisk& disk);
};

constexpr TFamilyRow familyRows[] = {
    {ERaidFamily::lsi, classes[0], nullptr},
    {ERaidFamily::lsiIde, classes[1], nullptr},
    {ERaidFamily::sr, classes[2], CommitDiskGroup},
};

// Of a disk behind an adapter or of a volume of the kernel: both say the same by the same names.
template <typename TVolume>
TLogicalDisk MakeLogicalDisk(const TVolume& volume) {
    constexpr std::uint16_t fixedBlock = 2;
    TLogicalDisk logical;
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
    for (const TFamilyRow& row : familyRows) {
        if (row.family != disk.raidFamily) {
            continue;
        }
        TLogicalDisk logical = MakeLogicalDisk(disk);
        logical.description = disk.transport + " RAID volume";
        logical.elementName = disk.model ? disk.model : logical.description;
        collection.Commit<TLogicalDisk>(row.shape, logicalDiskRows, logical);
        if (row.commitGroup != nullptr) {
            row.commitGroup(collection, disk);
        }
    }
}

}  // namespace

std::span<const TClassShape> GetLogicalDiskClasses() {
    return classes;
}

std::span<const TSourcePattern> GetLogicalDiskSources() {
    return sourcePatterns;
}

void CollectLogicalDisks(TCollection& collection) {
    for (const TDisk& disk : collection.GetDisks()) {
        CommitVolume(collection, disk);
    }
    for (const TSoftwareVolume& volume : collection.GetSoftwareVolumes()) {
        if (!volume.isLogicalDisk) {
            continue;
        }
        TLogicalDisk logical = MakeLogicalDisk(volume);
        logical.elementName = volume.name;
        logical.description = volume.description;
        collection.Commit<TLogicalDisk>(softwareShape, logicalDiskRows, logical);
    }
}

}  // namespace NVORHOST
