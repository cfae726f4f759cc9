#include "machine/collect/storage/software_volume.h"

#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/storage/block_device.h"
#include "machine/collect/storage/block_size.h"
#include "machine/collect/storage/udev_device.h"
#include "machine/collect/storage/volume_uuid.h"
#include "machine/parse/udev_record.h"

#include <algorithm>
#include <set>
#include <unordered_map>

namespace NVORHOST {
namespace {

constexpr std::string_view blockFolder = "/sys/block/";

// A block device as a part of volumes that are built on it.
struct TLayer {
    std::optional<TOperationalStatus> status;
    TRedundancy redundancy;
    std::set<std::string> disks;  // kernel names of the underlying disks
};

std::string ReadName(const ISystemFiles& files, const std::string& kernelName) {
    return ReadAttribute(files, std::string(blockFolder) + kernelName + "/dm/name").value_or("");
}

// Returns OK if every layer is OK, else the first status that is not; nullopt if a layer's status is unknown.
std::optional<TOperationalStatus> CombineStatus(const std::vector<TLayer>& layers) {
    bool isKnown = !layers.empty();
    for (const TLayer& layer : layers) {
        isKnown = isKnown && layer.status;
        if (layer.status && layer.status->front() != statusOk) {
            return layer.status;
        }
    }
    return isKnown ? layers.front().status : std::nullopt;
}

TRedundancy CombineRedundancy(const std::vector<TLayer>& layers) {
    if (layers.empty()) {
        return {};
    }
    TRedundancy weakest = layers.front().redundancy;
    for (const TLayer& layer : layers) {
        weakest = Weakest(weakest, layer.redundancy);
    }
    return weakest;
}

std::set<std::string> CombineDisks(const std::vector<TLayer>& layers) {
    std::set<std::string> disks;
    for (const TLayer& layer : layers) {
        disks.insert(layer.disks.begin(), layer.disks.end());
    }
    return disks;
}

bool ShareDisks(const std::vector<TLayer>& layers) {
    std::size_t count = 0;
    for (const TLayer& layer : layers) {
        count += layer.disks.size();
    }
    return CombineDisks(layers).size() != count;
}

struct TArray {
    const ISystemFiles& files;
    std::string folder;  // "/sys/block/md0/md/"

    std::string Read(std::string_view attribute) const {
        return ReadAttribute(files, folder + std::string(attribute)).value_or("");
    }
    std::optional<std::uint32_t> ReadCount(std::string_view attribute) const {
        return ReadNumber<std::uint32_t>(files, folder + std::string(attribute));
    }
};

TLayer MakeArrayLayer(const TArray& array, const std::vector<TLayer>& members) {
    const auto degraded = array.ReadCount("degraded");
    const std::string level = array.Read("level");
    TLayer layer;
    layer.status =
        FindArrayStatus(array.Read("array_state"), degraded.value_or(0), array.Read("sync_action"));
    layer.redundancy =
        FindArrayRedundancy({level, array.ReadCount("raid_disks"), degraded, array.ReadCount("layout")});
    if (ShareDisks(members)) {
        layer.redundancy.sparePackages = std::nullopt;  // a failing disk may take several members with it
    }
    layer.disks = CombineDisks(members);
    return layer;
}

// Falls back to udev, because older kernels do not show the UUID. The UUID of an array without superblock is
// zero.
std::optional<std::string> ReadArrayIdentity(const TArray& array, const std::string& kernelName) {
    std::string uuid = array.Read("uuid");
    if (uuid.find_first_not_of("0-") != std::string::npos) {
        return uuid;
    }
    const std::string record = ReadUdevRecord(array.files, std::string(blockFolder) + kernelName);
    return ArrayUuidFromUdev(FindUdevProperty(record, "MD_UUID").value_or(""),
                             array.Read("metadata_version"));
}

std::string DescribeArray(const std::string& level) {
    constexpr std::string_view prefix = "raid";
    if (level.starts_with(prefix)) {
        return "Software RAID " + level.substr(prefix.size()) + " array";
    }
    return level.empty() ? "Software RAID array" : "Software RAID array, " + level;
}

TLayer MakeMapperLayer(const std::vector<TLayer>& members, bool isMirror) {
    TLayer layer{CombineStatus(members), {}, CombineDisks(members)};
    // sysfs does not have the number of copies of LVM's own mirrors.
    if (!isMirror) {
        layer.redundancy = CombineRedundancy(members);
    }
    return layer;
}

// Finds the layers of block devices recursively and caches them.
class TLayers {
  public:
    TLayers(const ISystemFiles& files, const std::vector<TDisk>& disks,
            const std::vector<std::string>& blockNames)
        : files_(files), blockNames_(blockNames.begin(), blockNames.end()) {
        for (const TDisk& disk : disks) {
            layers_[disk.kernelName] = {disk.operationalStatus, disk.redundancy, {disk.kernelName}};
        }
    }

    TLayer Find(const std::string& kernelName) { return Find(kernelName, 0); }

  private:
    TLayer Find(const std::string& kernelName, int depth) {
        if (const auto known = layers_.find(kernelName); known != layers_.end()) {
            return known->second;
        }
        // Cached as an unknown disk during the recursion, which ends cycles in malformed trees.
        layers_[kernelName] = {std::nullopt, {}, {kernelName}};
        TLayer layer = Make(kernelName, depth);
        layers_[kernelName] = layer;
        return layer;
    }

    TLayer Make(const std::string& kernelName, int depth) {
        constexpr int maxDepth = 64;  // the kernel's own limits are lower
        const std::string folder = std::string(blockFolder) + kernelName;
        const auto names = files_.List(folder + "/slaves").value;
        std::vector<TLayer> members;
        if (depth > maxDepth) {
            return {std::nullopt, {}, {kernelName}};
        }
        members.reserve(names.size());
        for (const std::string& name : names) {
            members.push_back(Find(FindWhole(folder + "/slaves/", name), depth + 1));
        }
        if (kernelName.starts_with("md")) {
            return MakeArrayLayer({files_, folder + "/md/"}, members);
        }
        const bool isMirror = std::any_of(names.begin(), names.end(), [&](const std::string& name) {
            return IsMirrorPart(ReadName(files_, name));
        });
        return MakeMapperLayer(members, isMirror);
    }

    // Returns the disk or volume that a member is a partition of; the member itself if it is not a partition.
    std::string FindWhole(const std::string& folder, const std::string& name) const {
        if (blockNames_.contains(name)) {
            return name;
        }
        const std::string path = FindEntryDevice(files_, folder + name).value_or("");
        const std::string parent = path.substr(0, std::min(path.rfind('/'), path.size()));
        const std::string whole = parent.substr(parent.rfind('/') + 1);
        return blockNames_.contains(whole) ? whole : name;
    }

    const ISystemFiles& files_;
    std::set<std::string, std::less<>> blockNames_;
    std::unordered_map<std::string, TLayer> layers_;
};

using TFoundVolume = TKeyedRecord<TSoftwareVolume>;

TFoundVolume MakeFound(TSoftwareVolume volume, std::optional<std::string> identity) {
    TKeySource keySource{std::move(identity), volume.position};
    return {std::move(volume), std::move(keySource)};
}

// A container groups the arrays of a firmware format and holds no data itself; its version is
// "external:imsm". An array in it has a version that names the container: "external:/md127/0", or
// "external:-md127/0" while the array is read-only.
bool IsContainer(std::string_view metadataVersion) {
    constexpr std::string_view prefix = "external:";
    return metadataVersion.starts_with(prefix) && !metadataVersion.substr(prefix.size()).starts_with('/') &&
           !metadataVersion.substr(prefix.size()).starts_with('-');
}

std::optional<TFoundVolume> FindArray(const ISystemFiles& files, const std::string& kernelName) {
    const TArray array{files, std::string(blockFolder) + kernelName + "/md/"};
    const std::string state = array.Read("array_state");
    const std::string level = array.Read("level");
    // "clear" is a device node without an array.
    if (state.empty() || state == "clear" || IsContainer(array.Read("metadata_version"))) {
        return std::nullopt;
    }
    TSoftwareVolume volume;
    volume.name = kernelName;
    volume.position = kernelName;
    volume.description = DescribeArray(level);
    return MakeFound(std::move(volume), ReadArrayIdentity(array, kernelName));
}

std::optional<TFoundVolume> FindMapped(const ISystemFiles& files, const std::string& kernelName) {
    const std::string name = ReadName(files, kernelName);
    const std::string uuid =
        ReadAttribute(files, std::string(blockFolder) + kernelName + "/dm/uuid").value_or("");
    const auto kind = FindMapperKind(uuid, name);
    if (!kind) {
        return std::nullopt;
    }
    TSoftwareVolume volume;
    volume.position = name.empty() ? kernelName : name;
    volume.name = ReadableMapperName(uuid, volume.position);
    volume.mapperUuid = uuid;
    if (IsMultipath(uuid)) {
        volume.paths = files.List(std::string(blockFolder) + kernelName + "/slaves").value;
    }
    volume.description = kind->description;
    return MakeFound(std::move(volume), MapperIdentity(uuid));
}

TFoundVolume FindCached(const ISystemFiles& files, const std::string& kernelName) {
    TSoftwareVolume volume;
    volume.name = kernelName;
    volume.position = kernelName;
    volume.description = "Cached disk";
    volume.isLogicalDisk = false;
    return MakeFound(std::move(volume), ReadAttribute(files, std::string(blockFolder) + kernelName +
                                                                 "/bcache/backing_dev_uuid"));
}

void ReadSizes(const ISystemFiles& files, TSoftwareVolume& volume) {
    const std::string folder = std::string(blockFolder) + volume.kernelName;
    const auto sectors = ReadSectors(files, folder);
    if (sectors && *sectors != 0) {
        volume.sizeBytes = SectorsToBytes(*sectors);
        volume.blockSizeBytes = ReadBlockSize(files, folder);
    }
}

std::optional<TFoundVolume> FindVolume(const ISystemFiles& files, const std::string& kernelName) {
    if (kernelName.starts_with("md")) {
        return FindArray(files, kernelName);
    }
    if (kernelName.starts_with("bcache")) {
        return FindCached(files, kernelName);
    }
    return kernelName.starts_with("dm-") ? FindMapped(files, kernelName) : std::nullopt;
}

std::vector<TSoftwareVolume> ReadSoftwareVolumes(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    const auto names = files.List("/sys/block").value;
    TLayers layers(files, GetDisks(collection), names);
    std::vector<TFoundVolume> volumes;
    for (const std::string& kernelName : names) {
        auto found = FindVolume(files, kernelName);
        if (!found) {
            continue;
        }
        TSoftwareVolume& volume = *volumes.emplace_back(std::move(*found)).record;
        volume.kernelName = kernelName;
        ReadSizes(files, volume);
        const TLayer layer = layers.Find(kernelName);
        volume.operationalStatus = layer.status;
        volume.redundancy = layer.redundancy;
    }
    return AssignKeys(collection, std::move(volumes), &TSoftwareVolume::key, "volume");
}

}  // namespace

const std::vector<TSoftwareVolume>& GetSoftwareVolumes(TCollection& collection) {
    return collection.ReadOnce(ReadSoftwareVolumes);
}

}  // namespace NVORHOST
