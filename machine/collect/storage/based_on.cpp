// CIM_BasedOn: one instance per pair of a partition or software volume (Dependent) and a disk, partition or
// volume that it directly is on (Antecedent); first those of the partitions, then those of the volumes. A
// layer without an instance of its own, such as a part of an LVM mirror or a bcache device, is replaced by
// the devices below it.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/storage/block_instances.h"

#include <limits>
#include <set>

namespace NVORHOST {
namespace {

struct TBasedOn {
    std::optional<TCimReference> antecedent, dependent;
    std::optional<std::uint16_t> orderIndex;
};

constexpr TPropertyRow<TBasedOn> basedOnRows[] = {
    {"Antecedent", &TBasedOn::antecedent},
    {"Dependent", &TBasedOn::dependent},
    {"OrderIndex", &TBasedOn::orderIndex},
};

constexpr TCimClass<TBasedOn> basedOnClass{"CIM_BasedOn", basedOnRows};
constexpr const IClassDeclaration* classes[] = {&basedOnClass};

constexpr auto sourcePatterns =
    Join(partitionSources, std::array<TSourcePattern, 1>{"/sys/block/*/md/dev-*/slot"});

// The place of an active member in its md array, from 1; the kernel writes "none" for a spare.
std::optional<std::uint16_t> ReadOrder(const ISystemFiles& files, const std::string& volume,
                                       const std::string& member) {
    const auto slot =
        ReadNumber<std::uint16_t>(files, "/sys/block/" + volume + "/md/dev-" + member + "/slot");
    const bool fits = slot && *slot < std::numeric_limits<std::uint16_t>::max();
    return fits ? std::optional(static_cast<std::uint16_t>(*slot + 1)) : std::nullopt;
}

void CommitPartitions(TCollection& collection, const TBlockInstances& instances) {
    for (const TPartitionPlace& partition : GetPartitionPlaces(collection)) {
        std::set<std::string> seen;
        std::vector<std::string> wholes;
        AppendBlockInstances(collection.GetFiles(), instances, partition.wholeName, seen, wholes);
        for (const std::string& whole : wholes) {
            collection.Commit(basedOnClass,
                              {instances.at(whole), instances.at(partition.kernelName), std::nullopt});
        }
    }
}

void CommitVolumes(TCollection& collection, const TBlockInstances& instances) {
    const ISystemFiles& files = collection.GetFiles();
    for (const TSoftwareVolume& volume : GetSoftwareVolumes(collection)) {
        if (!volume.isLogicalDisk) {
            continue;
        }
        std::set<std::string> seen{volume.kernelName};
        std::vector<std::string> members;
        for (const std::string& member : ListBlockMembers(files, volume.kernelName)) {
            AppendBlockInstances(files, instances, member, seen, members);
        }
        for (const std::string& member : members) {
            collection.Commit(basedOnClass, {instances.at(member), instances.at(volume.kernelName),
                                             ReadOrder(files, volume.kernelName, member)});
        }
    }
}

void CollectBasedOn(TCollection& collection) {
    const TBlockInstances& instances = GetBlockInstances(collection);
    CommitPartitions(collection, instances);
    CommitVolumes(collection, instances);
}

}  // namespace

extern constinit const TCollector basedOnCollector{
    .name = "based-on",
    .description = "Devices that partitions and volumes are based on",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectBasedOn,
    .isForDocuments = false,
};

}  // namespace NVORHOST
