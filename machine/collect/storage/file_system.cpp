// Collects the mounted file systems of the block devices of this machine as CIM_LocalFileSystem, sorted by
// mount point. Network, FUSE and in-memory file systems are left out. A file system with bind mounts or
// subvolumes is one instance. CIM_ResidesOnExtent has one instance for each pair of a file system (Dependent)
// and a disk, partition or volume that holds it (Antecedent).
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/storage/block_instances.h"
#include "machine/collect/storage/udev_device.h"
#include "machine/parse/mount_info.h"
#include "machine/parse/udev_record.h"
#include "text/find_row.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

namespace NVORHOST {
namespace {

struct TFileSystem {
    std::optional<std::string> elementName, description, name, root, type, label, uuid;
    std::optional<std::uint64_t> sizeBytes, availableBytes, blockSizeBytes;
    std::optional<bool> isReadOnly;
    std::vector<std::string> extents;  // kernel names of the devices that hold it
    TInstancePlace place{};
};

constexpr TPropertyRow<TFileSystem> fileSystemRows[] = {
    {"ElementName", &TFileSystem::elementName, "property Label; property Root"},
    {"Description", &TFileSystem::description, "/proc/self/mountinfo type"},
    {"Name", &TFileSystem::name, "property UUID; /sys/dev/block/*; property Root"},
    {"Root", &TFileSystem::root, "/proc/self/mountinfo mount point"},
    {"FileSystemType", &TFileSystem::type, "/proc/self/mountinfo type"},
    {"Label", &TFileSystem::label, "@udev ID_FS_LABEL_ENC"},
    {"UUID", &TFileSystem::uuid, "@udev ID_FS_UUID_ENC"},
    {"BlockSize", &TFileSystem::blockSizeBytes, "call statvfs @"},
    {"FileSystemSize", &TFileSystem::sizeBytes, "call statvfs @"},
    {"AvailableSpace", &TFileSystem::availableBytes, "call statvfs @"},
    {"ReadOnly", &TFileSystem::isReadOnly, "/proc/self/mountinfo options"},
};

struct TResidesOnExtent {
    std::optional<TCimReference> antecedent, dependent;
};

constexpr TPropertyRow<TResidesOnExtent> residesOnExtentRows[] = {
    {"Antecedent", &TResidesOnExtent::antecedent,
     "/sys/dev/block/*; /proc/self/mountinfo source; /sys/fs/btrfs/*/devices"},
    {"Dependent", &TResidesOnExtent::dependent, "/proc/self/mountinfo mount point"},
};

constexpr TCimClass<TFileSystem> fileSystemClass{"CIM_LocalFileSystem", fileSystemRows};
constexpr TCimClass<TResidesOnExtent> residesOnExtentClass{"CIM_ResidesOnExtent", residesOnExtentRows};
constexpr const IClassDeclaration* classes[] = {&fileSystemClass, &residesOnExtentClass};

constexpr auto sourcePatterns = Join(partitionSources, std::array<TSourcePattern, 5>{
                                                           "/proc/self/mountinfo",
                                                           "/sys/class/block/*/dev",
                                                           "/sys/dev/block/*",
                                                           "/sys/fs/btrfs",
                                                           "/sys/fs/btrfs/*/devices",
                                                       });

struct TType {
    std::string_view name;
    bool isServedByKernel;  // false if a program answers, which may never happen
};

// File systems of block devices that only this machine accesses. Cluster file systems are not among them.
constexpr TType localTypes[] = {
    {"bcachefs", true}, {"btrfs", true},   {"erofs", true}, {"exfat", true},    {"ext2", true},
    {"ext3", true},     {"ext4", true},    {"f2fs", true},  {"fuseblk", false}, {"hfs", true},
    {"hfsplus", true},  {"iso9660", true}, {"jfs", true},   {"minix", true},    {"msdos", true},
    {"nilfs2", true},   {"ntfs", true},    {"ntfs3", true}, {"reiserfs", true}, {"squashfs", true},
    {"udf", true},      {"vfat", true},    {"xfs", true},
};

// File systems of the kernel without a device, which a path to a mount point may pass.
constexpr std::string_view passableTypes[] = {
    "autofs", "devtmpfs", "overlay", "proc", "ramfs", "rootfs", "sysfs", "tmpfs",
};

const TType* FindType(const TMount& mount) {
    return FindRow(localTypes, &TType::name, mount.type);
}

bool MayPass(const TMount* mount) {
    const TType* type = FindType(*mount);
    return type != nullptr ? type->isServedByKernel
                           : std::ranges::find(passableTypes, mount->type) != std::end(passableTypes);
}

using TDeviceNumber = std::pair<std::uint32_t, std::uint32_t>;
using TMounts = std::vector<TMount>;

bool Contains(const std::vector<std::string>& options, std::string_view option) {
    return std::ranges::find(options, option) != options.end();
}

// True if the mount is of a block device: it has the number of one, or its source is one, as for btrfs.
bool IsLocal(const TMount& mount) {
    return FindType(mount) != nullptr && (mount.major != 0 || mount.source.starts_with("/dev/"));
}

// A reachable mount goes before a hidden one, that of the whole file system before that of a part, a short
// path before a long one.
const TMount& ChooseMount(const TMounts& mounts, const std::vector<const TMount*>& candidates) {
    return **std::ranges::min_element(candidates, {}, [&](const TMount* mount) {
        return std::make_tuple(ListMountsOnTheWay(mounts, *mount).empty(),
                               mount->root != "/" && mount->type != "btrfs", mount->mountPoint.size(),
                               std::string_view(mount->mountPoint));
    });
}

// A path through a network or FUSE file system may never end, so its mount points are not accessed.
bool MayAccess(const TMounts& mounts, const TMount& mount) {
    const auto way = ListMountsOnTheWay(mounts, mount);
    return !way.empty() && std::ranges::all_of(way, MayPass);
}

// Returns the kernel's name of a device node such as "/dev/sda1" or "/dev/mapper/vg0-home".
std::string FindKernelName(TCollection& collection, std::string_view node) {
    constexpr std::string_view mapperFolder = "/dev/mapper/";
    constexpr std::string_view folder = "/dev/";
    if (!node.starts_with(mapperFolder)) {
        return std::string(node.substr(std::min(folder.size(), node.size())));
    }
    const std::string_view name = node.substr(mapperFolder.size());
    for (const TSoftwareVolume& volume : GetSoftwareVolumes(collection)) {
        if (volume.mapperUuid && volume.position == name) {
            return volume.kernelName;
        }
    }
    return {};
}

std::string FindDevice(TCollection& collection, const TMount& mount) {
    if (mount.major != 0) {
        const std::string number = std::to_string(mount.major) + ":" + std::to_string(mount.minor);
        if (auto name = ReadLinkedName(collection.GetFiles(), "/sys/dev/block/" + number)) {
            return *name;
        }
    }
    return mount.source.starts_with("/dev/") ? FindKernelName(collection, mount.source) : std::string();
}

std::string MakeRecordPath(const TMount& mount) {
    return "/run/udev/data/b" + std::to_string(mount.major) + ":" + std::to_string(mount.minor);
}

std::string ReadRecord(const ISystemFiles& files, const TMount& mount, const std::string& device) {
    if (mount.major != 0) {
        return files.ReadText(MakeRecordPath(mount)).value;
    }
    return device.empty() ? std::string() : ReadUdevRecord(files, "/sys/class/block/" + device);
}

// A btrfs file system may be on several devices.
std::vector<std::string> ListExtents(const ISystemFiles& files, const TFileSystem& fileSystem,
                                     const std::string& device) {
    if (fileSystem.type == "btrfs" && fileSystem.uuid) {
        auto names = files.List("/sys/fs/btrfs/" + *fileSystem.uuid + "/devices").value;
        if (!names.empty()) {
            return names;
        }
    }
    return device.empty() ? std::vector<std::string>() : std::vector{device};
}

std::optional<std::string> FindText(std::string_view record, std::string_view key) {
    const auto value = FindUdevProperty(record, key);
    return value && !value->empty() ? std::optional(DecodeUdevEscapes(*value)) : std::nullopt;
}

void SetSpace(TCollection& collection, const TMounts& mounts, const TMount& mount, TFileSystem& fileSystem) {
    if (!MayAccess(mounts, mount)) {
        return;
    }
    if (const auto space = collection.GetCalls().ReadFileSystemSpace(mount.mountPoint)) {
        fileSystem.blockSizeBytes = space->blockSizeBytes;
        fileSystem.sizeBytes = space->sizeBytes;
        fileSystem.availableBytes = space->availableBytes;
    }
}

TKeyedRecord<TFileSystem> MakeFileSystem(TCollection& collection, const TMounts& mounts,
                                         const TMount& mount) {
    const ISystemFiles& files = collection.GetFiles();
    const std::string device = FindDevice(collection, mount);
    const std::string record = ReadRecord(files, mount, device);
    TFileSystem fileSystem;
    fileSystem.place.folder = mount.mountPoint;
    fileSystem.place.udevRecord = mount.major != 0 ? MakeRecordPath(mount) : std::string();
    fileSystem.description = mount.type + " file system";
    fileSystem.root = mount.mountPoint;
    fileSystem.type = mount.type;
    fileSystem.label = FindText(record, "ID_FS_LABEL_ENC");
    fileSystem.uuid = FindText(record, "ID_FS_UUID_ENC");
    fileSystem.elementName = fileSystem.label ? fileSystem.label : fileSystem.root;
    fileSystem.isReadOnly = Contains(mount.superOptions, "ro");
    fileSystem.extents = ListExtents(files, fileSystem, device);
    SetSpace(collection, mounts, mount, fileSystem);
    const TBlockInstances& instances = GetBlockInstances(collection);
    const auto instance = instances.find(device);
    std::string position = instance == instances.end() ? mount.mountPoint : instance->second.key;
    TKeySource keySource{fileSystem.uuid, std::move(position)};
    return {std::move(fileSystem), std::move(keySource)};
}

void CommitExtents(TCollection& collection, const TFileSystem& fileSystem) {
    const TBlockInstances& instances = GetBlockInstances(collection);
    std::set<std::string> seen;
    std::vector<std::string> found;
    for (const std::string& extent : fileSystem.extents) {
        AppendBlockInstances(collection.GetFiles(), instances, extent, seen, found);
    }
    for (const std::string& name : found) {
        collection.Commit(residesOnExtentClass,
                          {instances.at(name),
                           TCimReference{fileSystemClass.GetName(), "Name", fileSystem.name.value_or("")}});
    }
}

void CollectFileSystems(TCollection& collection) {
    const TMounts mounts = ParseMountInfo(collection.GetFiles().ReadText("/proc/self/mountinfo").value);
    std::map<TDeviceNumber, std::vector<const TMount*>> mountsOfDevice;
    for (const TMount& mount : mounts) {
        if (IsLocal(mount)) {
            mountsOfDevice[{mount.major, mount.minor}].push_back(&mount);
        }
    }
    std::vector<TKeyedRecord<TFileSystem>> found;
    found.reserve(mountsOfDevice.size());
    for (const auto& [device, candidates] : mountsOfDevice) {
        found.push_back(MakeFileSystem(collection, mounts, ChooseMount(mounts, candidates)));
    }
    std::ranges::sort(found, {}, [](const auto& entry) { return std::string_view(*entry.record->root); });
    const auto fileSystems = AssignKeys(collection, std::move(found), &TFileSystem::name, "file system");
    for (const TFileSystem& fileSystem : fileSystems) {
        collection.Commit(fileSystemClass, fileSystem);
    }
    for (const TFileSystem& fileSystem : fileSystems) {
        CommitExtents(collection, fileSystem);
    }
}

}  // namespace

extern constinit const TCollector fileSystemCollector{
    .name = "file-system",
    .description = "Mounted file systems of the machine's disks and volumes",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectFileSystems,
    .isForDocuments = false,
};

}  // namespace NVORHOST
