// Volumes that the kernel builds: their names, keys and properties.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* logical = "KELSG_LogicalDisk";
TEST(LogicalDisks, HaveLvmNamesAndKeysOfTheMappersName) {
    const std::string uuids(64, 'x');
    TCollected collected;
    Collect(
        "/sys/block/dm-0/dm/name = vg.a--b-lv\n/sys/block/dm-0/dm/uuid = LVM-" + uuids +
            "\n/sys/block/dm-1/dm/name = my\\x20disk\n/sys/block/dm-1/dm/uuid = CRYPT-PLAIN-my\\x20disk\n",
        collected);
    EXPECT_THAT(collected.GetAll(logical, "ElementName"), ElementsAre("vg.a-b/lv", "my disk"));
    EXPECT_THAT(collected.GetAll(logical, "DeviceID"), ElementsAre(uuids, "CRYPT-PLAIN-my\\x20disk"));
}

TEST(LogicalDisks, HaveTheLvmUuidsOfGroupAndVolumeAsTheirKey) {
    const std::string uuids(64, 'x');
    TCollected collected;
    Collect("/sys/block/dm-0/dm/name = vg0-home\n/sys/block/dm-0/dm/uuid = LVM-" + uuids + "\n", collected);
    EXPECT_THAT(collected.GetAll(logical, "DeviceID"), ElementsAre(uuids));
    EXPECT_THAT(collected.GetAll(logical, "NumberOfBlocks"), ElementsAre("absent"));
}

std::string Array(const std::string& name, const std::string& metadataVersion) {
    const std::string folder = "/sys/devices/virtual/block/" + name;
    return "/sys/block/" + name + " -> " + folder + "\n" + folder + "/md/array_state = inactive\n" + folder +
           "/md/metadata_version = " + metadataVersion + "\n";
}

// A container, an array in it, a read-only array in it, and two arrays in md's own formats.
TEST(LogicalDisks, ListArraysInContainersButNotTheContainers) {
    TCollected collected;
    Collect(Array("md127", "external:imsm") + Array("md126", "external:/md127/0") +
                Array("md125", "external:-md127/1") + Array("md1", "1.2") + Array("md0", "none"),
            collected);
    EXPECT_THAT(collected.GetAll(logical, "ElementName"), ElementsAre("md0", "md1", "md125", "md126"));
}

TEST(LogicalDisks, AreCollectedIfTheirLayersFormACycle) {
    TCollected collected;
    Collect(
        "/sys/block/dm-0/dm/uuid = mpath-a\n/sys/block/dm-0/slaves/dm-1/size = 1\n"
        "/sys/block/dm-1/dm/uuid = mpath-b\n/sys/block/dm-1/slaves/dm-0/size = 1\n",
        collected);
    EXPECT_THAT(collected.GetAll(logical, "DataRedundancy"), ElementsAre("absent", "absent"));
}

TEST(LogicalDisks, HaveTheirNamesInTheKeyIfTheirUuidsAreEqual) {
    TCollected collected;
    Collect(
        "/sys/block/dm-0/dm/uuid = mpath-a\n/sys/block/dm-0/dm/name = one\n"
        "/sys/block/dm-1/dm/uuid = mpath-a\n/sys/block/dm-1/dm/name = two\n",
        collected);
    EXPECT_THAT(collected.GetAll(logical, "DeviceID"), ElementsAre("mpath-a@one", "mpath-a@two"));
    EXPECT_THAT(collected.GetReport("logical-disk").notes,
                ElementsAre("2 volumes share the key mpath-a; their positions tell them apart"));
}

// The properties that no instance of any of the classes has on any of the machines.
std::set<std::string> NeverSet(const std::vector<const char*>& classNames) {
    std::set<std::string> unset;
    std::set<std::string> set;
    for (const std::string shape : {"media-drives", "software-volumes", "raid-adapters"}) {
        std::ifstream tree(std::string(NOXINFO_MACHINES) + "/" + shape + "/tree.txt");
        EXPECT_TRUE(tree) << shape;
        TCollected collected;
        Collect(std::string(std::istreambuf_iterator<char>(tree), {}), collected);
        for (const char* name : classNames) {
            const auto cimClass = collected.target.FindClass(name);
            for (const auto& declaration : cimClass->GetDeclarations()) {
                unset.insert(declaration.name);
                for (const auto& instance : cimClass->GetInstances()) {
                    if (instance->Find(declaration.name) != nullptr) {
                        set.insert(declaration.name);
                    }
                }
            }
        }
    }
    for (const std::string& name : set) {
        unset.erase(name);
    }
    return unset;
}

TEST(RemovableDrives, HaveEveryPropertyThatTheKernelHas) {
    EXPECT_THAT(NeverSet({"KELSG_DisketteDrive", "KELSG_TapeDrive", "KELSG_CDROMDrive", "KELSG_DVDDrive"}),
                ElementsAre("LoadTime", "MaxAccessTime", "MediaIsLocked", "MountCount", "NeedsCleaning",
                            "TimeOfLastMount", "TotalMountTime", "UnloadTime"));
}

TEST(LogicalDisks, HaveEveryPropertyButTheReserve) {
    EXPECT_THAT(NeverSet({"KELSG_LogicalDisk"}), ElementsAre("DeltaReservation"));
    EXPECT_THAT(NeverSet({"KELSG_LSILogicalDisk", "KELSG_LSIIDELogicalDisk", "KELSG_srLogicalDisk"}),
                ElementsAre("DeltaReservation"));
    EXPECT_THAT(NeverSet({"KELSG_srDiskGroup"}), IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
