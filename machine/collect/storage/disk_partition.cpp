// CIM_DiskPartition: one instance per partition, first those of the disks, then those of the software
// volumes, each in the order of their numbers. The partitions of a multipath set belong to the set, not to
// the disks that are its paths.
#include "machine/collect/storage/disk_partition.h"

#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/operational_status.h"
#include "machine/collect/storage/block_size.h"
#include "machine/collect/storage/udev_device.h"
#include "machine/collect/storage/volume_uuid.h"
#include "machine/parse/udev_record.h"
#include "machine/parse/uevent.h"
#include "text/find_row.h"
#include "text/numbers.h"

#include <algorithm>
#include <map>
#include <set>

namespace NVORHOST {
namespace {

constexpr const char* blockFolder = "/sys/block/";

struct TPartition {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<TOperationalStatus> operationalStatus;
    std::optional<std::uint64_t> consumableBlocks, numberOfBlocks, sizeBytes;
    std::optional<std::uint16_t> dataOrganization, dataRedundancy, packageRedundancy, subtype, type;
    std::optional<bool> sequentialAccess, bootable, isPrimary;
    TInstancePlace place{};
};

constexpr TPropertyRow<TPartition> partitionRows[] = {
    {"ElementName", &TPartition::elementName, "@; @/uevent PARTNAME; @udev ID_PART_ENTRY_NAME"},
    {"Description", &TPartition::description, "@/partition; @udev ID_PART_ENTRY_SCHEME"},
    {"DeviceID", &TPartition::deviceId, "@/uevent PARTUUID; @udev ID_PART_ENTRY_UUID"},
    {"OperationalStatus", &TPartition::operationalStatus,
     "/sys/block/*/device/state; /sys/block/*/md/array_state"},
    {"ConsumableBlocks", &TPartition::consumableBlocks, "property NumberOfBlocks"},
    {"DataOrganization", &TPartition::dataOrganization, "constant"},
    {"DataRedundancy", &TPartition::dataRedundancy, "/sys/block/*/md/level; /sys/block/*/md/raid_disks"},
    {"DeltaReservation", TUnavailable{ECimType::eUint8}, "none: partitions reserve nothing"},
    {"NumberOfBlocks", &TPartition::numberOfBlocks, "property Size; /sys/block/*/queue/logical_block_size"},
    {"PackageRedundancy", &TPartition::packageRedundancy, "/sys/block/*/md/level; /sys/block/*/md/degraded"},
    {"SequentialAccess", &TPartition::sequentialAccess, "constant"},
    {"Bootable", &TPartition::bootable, "@udev ID_PART_ENTRY_FLAGS; @udev ID_PART_ENTRY_TYPE"},
    {"Size", &TPartition::sizeBytes, "number @/size; @udev ID_PART_ENTRY_SIZE"},
    {"PartitionSubtype", &TPartition::subtype, "@udev ID_PART_ENTRY_TYPE"},
    {"PartitionType", &TPartition::type, "@udev ID_PART_ENTRY_TYPE; @/partition"},
    {"PrimaryPartition", &TPartition::isPrimary, "@udev ID_PART_ENTRY_TYPE; @/partition"},
};

constexpr TCimClass<TPartition> diskPartitionClass{diskPartitionClassName, partitionRows};
constexpr const IClassDeclaration* classes[] = {&diskPartitionClass};

constexpr auto sourcePatterns = partitionSources;

// CIM_DiskPartition.PartitionType.
constexpr std::uint16_t primaryType = 1;
constexpr std::uint16_t extendedType = 2;
constexpr std::uint16_t logicalType = 3;

// A disk or volume that has partitions.
struct TWhole {
    std::string kernelName;
    std::string key;
    std::string position;
    std::string name;  // for descriptions
    std::optional<std::uint64_t> blockSizeBytes;
    std::optional<TOperationalStatus> operationalStatus;
    TRedundancy redundancy;
    std::optional<std::string> mapperUuid;  // device mapper UUID; absent for other volumes
    std::vector<std::string> paths;         // kernel names of the paths of a multipath set, else empty
};

// A partition that is a separate device mapper device.
struct TMappedPartition {
    std::string kernelName;
    std::uint32_t number;
};

using TMappedPartitions =
    std::map<std::string, std::vector<TMappedPartition>, std::less<>>;  // by whole's UUID

// One partition in the files of the kernel and in the udev database.
struct TPartitionSource {
    const TWhole* whole;  // never null
    std::string kernelName;
    std::string folder;
    std::uint32_t number;
    std::string uevent;
    std::string udevRecord;

    std::optional<std::string_view> FindUdev(std::string_view key) const {
        return FindUdevProperty(udevRecord, key);
    }
    // Zero if the udev rule has omitted the flags.
    std::optional<std::uint64_t> FindFlags() const {
        const auto text = FindUdev("ID_PART_ENTRY_FLAGS");
        return text ? ParseHexNumber<std::uint64_t>(*text) : std::optional<std::uint64_t>(0);
    }
};

std::uint16_t FindDosType(std::uint32_t number, std::uint8_t entryType) {
    constexpr std::uint32_t firstLogicalNumber = 5;
    constexpr std::uint8_t extendedEntryTypes[] = {0x05, 0x0F, 0x85};
    if (number >= firstLogicalNumber) {
        return logicalType;
    }
    const bool isExtended = std::ranges::find(extendedEntryTypes, entryType) != std::end(extendedEntryTypes);
    return isExtended ? extendedType : primaryType;
}

void SetFromDos(const TPartitionSource& source, TPartition& partition) {
    constexpr std::uint64_t activeFlag = 0x80;
    if (const auto flags = source.FindFlags()) {
        partition.bootable = (*flags & activeFlag) != 0;
    }
    const auto entryType = ParseHexNumber<std::uint8_t>(source.FindUdev("ID_PART_ENTRY_TYPE").value_or(""));
    if (entryType) {
        partition.subtype = std::uint16_t{*entryType};
        partition.type = FindDosType(source.number, *entryType);
        partition.isPrimary = partition.type == primaryType;
    }
}

void SetFromGpt(const TPartitionSource& source, TPartition& partition) {
    constexpr std::string_view efiSystem = "c12a7328-f81f-11d2-ba4b-00a0c93ec93b";
    constexpr std::uint64_t legacyBootableFlag = 0x04;
    const auto flags = source.FindFlags();
    if (flags) {
        partition.bootable =
            source.FindUdev("ID_PART_ENTRY_TYPE") == efiSystem || (*flags & legacyBootableFlag) != 0;
    }
}

struct TScheme {
    std::string_view udevName;
    std::string_view word;
    void (*set)(const TPartitionSource& source, TPartition& partition);
};

constexpr TScheme schemes[] = {
    {"dos", "DOS", SetFromDos},
    {"gpt", "GPT", SetFromGpt},
};

std::optional<std::uint64_t> FindSectors(const ISystemFiles& files, const TPartitionSource& source) {
    // The kernel always shows an extended partition with two sectors.
    constexpr std::uint64_t sectorsOfExtended = 2;
    const auto sectors = ReadSectors(files, source.folder);
    if (sectors && *sectors > sectorsOfExtended) {
        return sectors;
    }
    return ParseNumber<std::uint64_t>(source.FindUdev("ID_PART_ENTRY_SIZE").value_or(""));
}

void SetSizes(std::optional<std::uint64_t> sectors, TPartition& partition, const TWhole& whole) {
    if (!sectors) {
        return;
    }
    partition.sizeBytes = SectorsToBytes(*sectors);
    if (whole.blockSizeBytes && *whole.blockSizeBytes != 0) {
        partition.numberOfBlocks = *partition.sizeBytes / *whole.blockSizeBytes;
        if (partition.type != extendedType) {
            partition.consumableBlocks = partition.numberOfBlocks;
        }
    }
}

std::optional<std::string> FindIdentity(const TPartitionSource& source) {
    auto uuid = FindUeventValue(source.uevent, "PARTUUID");
    if (!uuid) {
        uuid = source.FindUdev("ID_PART_ENTRY_UUID");
    }
    return uuid && !uuid->empty() ? std::optional<std::string>(*uuid) : std::nullopt;
}

std::string FindLabel(const TPartitionSource& source) {
    if (const auto name = FindUeventValue(source.uevent, "PARTNAME")) {
        return std::string(*name);
    }
    return DecodeUdevEscapes(source.FindUdev("ID_PART_ENTRY_NAME").value_or(""));
}

std::string NumberSuffix(const TPartitionSource& source) {
    return "-part" + std::to_string(source.number);
}

std::string Describe(const TPartitionSource& source, const TScheme* scheme) {
    std::string description = scheme == nullptr ? "Partition " : std::string(scheme->word) + " partition ";
    return description + std::to_string(source.number) + " of " + source.whole->name;
}

std::string MakeElementName(const TPartitionSource& source) {
    const std::string label = FindLabel(source);
    return label.empty() ? source.kernelName : source.kernelName + " (" + label + ")";
}

const TScheme* FindScheme(const TPartitionSource& source) {
    const auto name = source.FindUdev("ID_PART_ENTRY_SCHEME");
    return name ? FindRow(schemes, &TScheme::udevName, *name) : nullptr;
}

TPartition MakePartition(const ISystemFiles& files, const TPartitionSource& source) {
    constexpr std::uint16_t fixedBlock = 2;
    const TScheme* scheme = FindScheme(source);
    TPartition partition;
    partition.place.folder = source.folder;
    partition.elementName = MakeElementName(source);
    partition.description = Describe(source, scheme);
    partition.operationalStatus = source.whole->operationalStatus;
    partition.dataOrganization = fixedBlock;
    partition.sequentialAccess = false;
    partition.dataRedundancy = source.whole->redundancy.dataCopies;
    partition.packageRedundancy = source.whole->redundancy.sparePackages;
    if (scheme != nullptr) {
        scheme->set(source, partition);
    }
    SetSizes(FindSectors(files, source), partition, *source.whole);
    return partition;
}

TPartitionSource ReadSource(const ISystemFiles& files, const TWhole& whole, const std::string& folder,
                            std::uint32_t number) {
    return {&whole, folder.substr(folder.rfind('/') + 1),     folder,
            number, files.ReadText(folder + "/uevent").value, ReadUdevRecord(files, folder)};
}

// Reads the partitions that the kernel has created from the partition table on the block device `tableName`.
std::vector<TPartitionSource> ReadKernelSources(const ISystemFiles& files, const TWhole& whole,
                                                const std::string& tableName) {
    std::vector<TPartitionSource> sources;
    const std::string tableFolder = blockFolder + tableName;
    for (const std::string& name : files.List(tableFolder).value) {
        if (!name.starts_with(tableName)) {
            continue;  // an attribute
        }
        const std::string folder = tableFolder + "/" + name;
        if (const auto number = ReadNumber<std::uint32_t>(files, folder + "/partition")) {
            sources.push_back(ReadSource(files, whole, folder, *number));
        }
    }
    return sources;
}

// Reads the partitions of a device mapper volume, which are device mapper devices themselves.
std::vector<TPartitionSource> ReadMappedSources(const ISystemFiles& files, const TWhole& whole,
                                                const TMappedPartitions& mapped) {
    std::vector<TPartitionSource> sources;
    if (const auto found = mapped.find(*whole.mapperUuid); found != mapped.end()) {
        for (const TMappedPartition& partition : found->second) {
            sources.push_back(ReadSource(files, whole, blockFolder + partition.kernelName, partition.number));
        }
    }
    return sources;
}

// Every path of a multipath set has the partition table of the set, so the first path with partitions is
// used.
std::vector<TPartitionSource> ReadPathSources(const ISystemFiles& files, const TWhole& whole) {
    for (const std::string& path : whole.paths) {
        auto sources = ReadKernelSources(files, whole, path);
        if (!sources.empty()) {
            return sources;
        }
    }
    return {};
}

std::vector<TPartitionSource> ReadSources(const ISystemFiles& files, const TWhole& whole,
                                          const TMappedPartitions& mapped) {
    auto sources = whole.mapperUuid ? ReadMappedSources(files, whole, mapped)
                                    : ReadKernelSources(files, whole, whole.kernelName);
    if (sources.empty()) {
        sources = ReadPathSources(files, whole);
    }
    std::sort(sources.begin(), sources.end(),
              [](const auto& a, const auto& b) { return a.number < b.number; });
    return sources;
}

TMappedPartitions ReadMappedPartitions(const ISystemFiles& files) {
    TMappedPartitions partitions;
    for (const std::string& name : files.List("/sys/block").value) {
        if (!name.starts_with("dm-")) {
            continue;
        }
        const std::string uuid = ReadAttribute(files, blockFolder + name + "/dm/uuid").value_or("");
        if (const auto partition = FindMapperPartition(uuid)) {
            partitions[std::string(partition->wholeUuid)].push_back({name, partition->number});
        }
    }
    return partitions;
}

TKeySource MakeKeySource(const TPartitionSource& source) {
    const std::string suffix = NumberSuffix(source);
    return {FindIdentity(source).value_or(source.whole->key + suffix), source.whole->position + suffix};
}

std::vector<TWhole> FindWholes(TCollection& collection) {
    std::set<std::string> paths;
    for (const TSoftwareVolume& volume : GetSoftwareVolumes(collection)) {
        paths.insert(volume.paths.begin(), volume.paths.end());
    }
    std::vector<TWhole> wholes;
    for (const TDisk& disk : GetDisks(collection)) {
        if (!paths.contains(disk.kernelName)) {
            wholes.push_back({disk.kernelName,
                              disk.key,
                              disk.position,
                              disk.model.value_or(disk.key),
                              disk.blockSizeBytes,
                              disk.operationalStatus,
                              disk.redundancy,
                              {},
                              {}});
        }
    }
    for (const TSoftwareVolume& volume : GetSoftwareVolumes(collection)) {
        wholes.push_back({volume.kernelName, volume.key, volume.position, volume.name, volume.blockSizeBytes,
                          volume.operationalStatus, volume.redundancy, volume.mapperUuid, volume.paths});
    }
    return wholes;
}

struct TPartitions {
    std::vector<TWhole> wholes;
    std::vector<TPartitionSource> sources;  // refer to the wholes
    std::vector<std::string> keys;          // one key for each source, in the same order
};

TPartitions ReadPartitions(TCollection& collection) {
    TPartitions partitions;
    partitions.wholes = FindWholes(collection);
    const TMappedPartitions mapped = ReadMappedPartitions(collection.GetFiles());
    std::vector<TKeySource> keySources;
    for (const TWhole& whole : partitions.wholes) {
        for (TPartitionSource& source : ReadSources(collection.GetFiles(), whole, mapped)) {
            keySources.push_back(MakeKeySource(source));
            partitions.sources.push_back(std::move(source));
        }
    }
    partitions.keys = collection.MakeKeys(keySources, "partition");
    return partitions;
}

void CollectDiskPartitions(TCollection& collection) {
    const TPartitions& partitions = collection.ReadOnce(ReadPartitions);
    for (std::size_t i = 0; i < partitions.sources.size(); ++i) {
        TPartition partition = MakePartition(collection.GetFiles(), partitions.sources[i]);
        partition.deviceId = partitions.keys[i];
        collection.Commit(diskPartitionClass, partition);
    }
}

}  // namespace

std::vector<TPartitionPlace> GetPartitionPlaces(TCollection& collection) {
    const TPartitions& partitions = collection.ReadOnce(ReadPartitions);
    std::vector<TPartitionPlace> places;
    for (std::size_t i = 0; i < partitions.sources.size(); ++i) {
        const TPartitionSource& source = partitions.sources[i];
        places.push_back({source.kernelName, source.whole->kernelName, partitions.keys[i]});
    }
    return places;
}

extern constinit const TCollector diskPartitionCollector{
    .name = "partition",
    .description = "Partitions of disks and md arrays",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectDiskPartitions,
};

}  // namespace NVORHOST
