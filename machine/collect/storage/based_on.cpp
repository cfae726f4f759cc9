// CIM_BasedOn: one instance per pair of a partition or software volume (Dependent) and a disk, partition or
// volume that it directly is on (Antecedent); first those of the partitions, then those of the volumes. A
// layer without an instance of its own, such as a part of an LVM mirror or a bcache device, is replaced by
// the devices below it.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/storage/block_instances.h"
#include "text/lines.h"

#include <algorithm>
#include <limits>
#include <set>

namespace NVORHOST {
namespace {

struct TBasedOn {
    std::optional<TCimReference> antecedent, dependent;
    std::optional<std::uint16_t> orderIndex;
    std::optional<std::string> role, state;
    TInstancePlace place{};
};

constexpr TPropertyRow<TBasedOn> basedOnRows[] = {
    {"Antecedent", &TBasedOn::antecedent, "/sys/block/*/slaves; /sys/block/*/*/partition"},
    {"Dependent", &TBasedOn::dependent, "/sys/block/*/slaves; /sys/block/*/*/partition"},
    {"OrderIndex", &TBasedOn::orderIndex, "@/slot"},
    {"Role", &TBasedOn::role, "@/slot; @/state"},
    {"State", &TBasedOn::state, "@/state; /sys/block/*/device/access_state"},
};

constexpr TCimClass<TBasedOn> basedOnClass{"CIM_BasedOn", basedOnRows};
constexpr const IClassDeclaration* classes[] = {&basedOnClass};

constexpr auto sourcePatterns =
    Join(partitionSources,
         std::array<TSourcePattern, 2>{"/sys/block/*/md/dev-*/slot", "/sys/block/*/md/dev-*/state"});

// True if `words`, which commas separate, has the word.
bool HasWord(std::string_view words, std::string_view word) {
    while (!words.empty()) {
        if (TakeUntil(words, ',') == word) {
            return true;
        }
    }
    return false;
}

// The kernel calls a member that is being rebuilt "spare" too, but only a real spare has no slot.
std::optional<std::string> FindRoleInArray(std::string_view state, bool hasSlot) {
    for (const std::string_view role : {"journal", "replacement"}) {
        if (HasWord(state, role)) {
            return std::string(role);
        }
    }
    if (hasSlot) {
        return "member";
    }
    return HasWord(state, "spare") ? std::optional<std::string>("spare") : std::nullopt;
}

// Reads the place of a member in its md array, from 1, its role and its state. The kernel writes "none" for
// the slot of a spare.
void SetFromArray(const ISystemFiles& files, const std::string& folder, TBasedOn& pair) {
    pair.place.folder = folder.substr(0, folder.size() - 1);
    const auto slot = ReadNumber<std::uint16_t>(files, folder + "slot");
    const bool hasSlot = slot && *slot < std::numeric_limits<std::uint16_t>::max();
    if (hasSlot) {
        pair.orderIndex = static_cast<std::uint16_t>(*slot + 1);
    }
    pair.state = ReadAttribute(files, folder + "state");
    pair.role = FindRoleInArray(pair.state.value_or(""), hasSlot);
}

// Reads the state of the path, and of its target port where a device handler has it.
void SetFromPath(const ISystemFiles& files, const std::string& path, TBasedOn& pair) {
    const std::string folder = "/sys/block/" + path + "/device/";
    pair.place.folder = folder.substr(0, folder.size() - 1);
    pair.role = "path";
    pair.state = ReadAttribute(files, folder + "state");
    const auto access = ReadAttribute(files, folder + "access_state");
    if (pair.state && access) {
        *pair.state += "," + *access;
    }
}

TBasedOn MakePair(const ISystemFiles& files, const TBlockInstances& instances, const TSoftwareVolume& volume,
                  const std::string& member) {
    TBasedOn pair;
    pair.antecedent = instances.at(member);
    pair.dependent = instances.at(volume.kernelName);
    if (std::ranges::find(volume.paths, member) != volume.paths.end()) {
        SetFromPath(files, member, pair);
    } else {
        SetFromArray(files, "/sys/block/" + volume.kernelName + "/md/dev-" + member + "/", pair);
    }
    return pair;
}

void CommitPartitions(TCollection& collection, const TBlockInstances& instances) {
    for (const TPartitionPlace& partition : GetPartitionPlaces(collection)) {
        std::set<std::string> seen;
        std::vector<std::string> wholes;
        AppendBlockInstances(collection.GetFiles(), instances, partition.wholeName, seen, wholes);
        for (const std::string& whole : wholes) {
            TBasedOn pair;
            pair.antecedent = instances.at(whole);
            pair.dependent = instances.at(partition.kernelName);
            collection.Commit(basedOnClass, pair);
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
            collection.Commit(basedOnClass, MakePair(files, instances, volume, member));
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
