#include "machine/collect/storage/block_instances.h"

#include "machine/collect/frame/collection.h"
#include "machine/collect/storage/disk_class.h"

namespace NVORHOST {
namespace {

TCimReference MakeReference(std::string_view className, const std::string& key) {
    return {className, "DeviceID", key};
}

TBlockInstances FindInstances(TCollection& collection) {
    TBlockInstances instances;
    for (const TDisk& disk : GetDisks(collection)) {
        instances.emplace(disk.kernelName, MakeReference(GetDiskClassName(disk), disk.key));
    }
    for (const TSoftwareVolume& volume : GetSoftwareVolumes(collection)) {
        if (volume.isLogicalDisk) {
            instances.emplace(volume.kernelName, MakeReference(softwareVolumeClassName, volume.key));
        }
    }
    for (const TPartitionPlace& partition : GetPartitionPlaces(collection)) {
        instances.emplace(partition.kernelName, MakeReference(diskPartitionClassName, partition.key));
    }
    return instances;
}

}  // namespace

const TBlockInstances& GetBlockInstances(TCollection& collection) {
    return collection.ReadOnce(FindInstances);
}

std::vector<std::string> ListBlockMembers(const ISystemFiles& files, const std::string& kernelName) {
    return files.List("/sys/block/" + kernelName + "/slaves").value;
}

void AppendBlockInstances(const ISystemFiles& files, const TBlockInstances& instances,
                          const std::string& member, std::set<std::string>& seen,
                          std::vector<std::string>& found) {
    if (!seen.insert(member).second) {
        return;
    }
    if (instances.contains(member)) {
        found.push_back(member);
        return;
    }
    for (const std::string& below : ListBlockMembers(files, member)) {
        AppendBlockInstances(files, instances, below, seen, found);
    }
}

}  // namespace NVORHOST
