// Volumes of the kernel: which there are, what they are called, and what may fail below them.
#include "machine/collect/frame/operational_status.h"
#include "machine/collect/storage/redundancy.h"
#include "machine/collect/storage/volume_uuid.h"
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>

namespace NVORHOST {

static bool operator==(const TRedundancy& first, const TRedundancy& second) {
    return first.dataCopies == second.dataCopies && first.sparePackages == second.sparePackages;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* logical = "KELSG_LogicalDisk";
constexpr TRedundancy unknown{};

TRedundancy Copies(std::uint16_t dataCopies, std::uint16_t sparePackages) {
    return {dataCopies, sparePackages};
}

TEST(FindArrayRedundancy, IsZeroForStripes) {
    EXPECT_EQ(FindArrayRedundancy({"raid0", 4, std::nullopt}), Copies(1, 0));
    EXPECT_EQ(FindArrayRedundancy({"linear", 2, std::nullopt}), Copies(1, 0));
}

TEST(FindArrayRedundancy, CountsTheSynchronisedDisksOfAMirror) {
    EXPECT_EQ(FindArrayRedundancy({"raid1", 3, 0}), Copies(3, 2));
    EXPECT_EQ(FindArrayRedundancy({"raid1", 3, 2}), Copies(1, 0));
    EXPECT_EQ(FindArrayRedundancy({"raid1", 2, 2}), unknown);
    EXPECT_EQ(FindArrayRedundancy({"raid1", 2, std::nullopt}), unknown);
    EXPECT_EQ(FindArrayRedundancy({"raid1", std::nullopt, 0}), unknown);
}

TEST(FindArrayRedundancy, SubtractsMissingDisksFromTheParity) {
    EXPECT_EQ(FindArrayRedundancy({"raid4", 3, 0}), Copies(1, 1));
    EXPECT_EQ(FindArrayRedundancy({"raid5", 3, 1}), Copies(1, 0));
    EXPECT_EQ(FindArrayRedundancy({"raid6", 4, 1}), Copies(1, 1));
    EXPECT_EQ(FindArrayRedundancy({"raid6", 4, 3}), Copies(1, 0));
    EXPECT_EQ(FindArrayRedundancy({"raid5", 3, std::nullopt}), (TRedundancy{1, std::nullopt}));
}

TEST(FindArrayRedundancy, ReadsTheLayoutOfStripedMirrorsUntilADiskIsLost) {
    EXPECT_EQ(FindArrayRedundancy({"raid10", 4, 0, 0x102}), Copies(2, 1));
    EXPECT_EQ(FindArrayRedundancy({"raid10", 6, 0, 0x203}), Copies(6, 5));
    EXPECT_EQ(FindArrayRedundancy({"raid10", 4, 1, 0x102}), unknown);
    EXPECT_EQ(FindArrayRedundancy({"raid10", 4, 0, std::nullopt}), unknown);
    EXPECT_EQ(FindArrayRedundancy({"raid10", 4, 0, 0}), unknown);
}

TEST(FindArrayRedundancy, IsUnknownForOtherLevels) {
    EXPECT_EQ(FindArrayRedundancy({"multipath", 2, 0}), unknown);
    EXPECT_EQ(FindArrayRedundancy({"", 2, 0}), unknown);
}

TEST(FindArrayStatus, FollowsTheStateUnlessDisksAreLost) {
    EXPECT_THAT(*FindArrayStatus("clean", 0, "idle"), ElementsAre(2));
    EXPECT_THAT(*FindArrayStatus("read-auto", 0, ""), ElementsAre(2));
    EXPECT_THAT(*FindArrayStatus("active", 1, "idle"), ElementsAre(3));
    EXPECT_THAT(*FindArrayStatus("active", 1, "recover"), ElementsAre(3, 11));
    EXPECT_THAT(*FindArrayStatus("clean", 0, "resync"), ElementsAre(2, 11));
    EXPECT_THAT(*FindArrayStatus("clean", 0, "check"), ElementsAre(2));
    EXPECT_THAT(*FindArrayStatus("inactive", 1, "recover"), ElementsAre(10));
    EXPECT_EQ(FindArrayStatus("", 0, ""), std::nullopt);
}

TEST(FindRaidVolumeStatus, MapsEveryWordOfTheKernelsClass) {
    EXPECT_THAT(*FindRaidVolumeStatus("active"), ElementsAre(2));
    EXPECT_THAT(*FindRaidVolumeStatus("degraded"), ElementsAre(3));
    EXPECT_THAT(*FindRaidVolumeStatus("resyncing"), ElementsAre(3));
    EXPECT_THAT(*FindRaidVolumeStatus("offline"), ElementsAre(6));
    EXPECT_THAT(*FindRaidVolumeStatus("unknown"), ElementsAre(0));
    EXPECT_EQ(FindRaidVolumeStatus("running"), std::nullopt);
}

TEST(ArrayUuidFromUdev, HasTheKernelsForm) {
    EXPECT_EQ(ArrayUuidFromUdev("11111111:22222222:33333333:44444444", "1.2"),
              "11111111-2222-2222-3333-333344444444");
    EXPECT_EQ(ArrayUuidFromUdev("01234567:89abcdef:01234567:89abcdef", "0.90"),
              "67452301-efcd-ab89-6745-2301efcdab89");
    EXPECT_EQ(ArrayUuidFromUdev("", "1.2"), std::nullopt);
    EXPECT_EQ(ArrayUuidFromUdev("11111111-22222222-33333333-44444444", "1.2"), std::nullopt);
    EXPECT_EQ(ArrayUuidFromUdev("1111111g:22222222:33333333:44444444", "1.2"), std::nullopt);
}

TEST(FindMapperKind, SeparatesVolumesFromInternalLayers) {
    const std::string uuid = "LVM-" + std::string(64, 'x');
    const auto describe = [](const std::string& id, const std::string& name) {
        const auto kind = FindMapperKind(id, name);
        return kind ? std::string(kind->description) : "none";
    };
    EXPECT_EQ(describe(uuid, "vg0-home"), "LVM logical volume");
    EXPECT_EQ(describe(uuid, "my_rimage--group-home"), "LVM logical volume");
    EXPECT_EQ(describe(uuid + "-real", "vg0-home-real"), "none");
    EXPECT_EQ(describe(uuid, "vg0-home_rimage_0"), "none");
    EXPECT_EQ(describe(uuid, "vg0-pool_tdata"), "none");
    EXPECT_EQ(describe("mpath-3600a098", "mpatha"), "Multipath device");
    EXPECT_EQ(describe("part1-mpath-3600a098", "mpatha-part1"), "none");
    EXPECT_EQ(describe("CRYPT-LUKS1-0123-x", "x"), "Encrypted device, LUKS");
    EXPECT_EQ(describe("CRYPT-VERITY-0123-x", "x"), "none");
    EXPECT_EQ(describe("", "x"), "none");
}

TEST(ReadableMapperName, SplitsGroupAndVolumeAtTheSingleHyphen) {
    const std::string lvm = "LVM-" + std::string(64, 'x');
    EXPECT_EQ(ReadableMapperName(lvm, "vg.a--b-lv"), "vg.a-b/lv");
    EXPECT_EQ(ReadableMapperName(lvm, "vg-lv--1--2"), "vg/lv-1-2");
    EXPECT_EQ(ReadableMapperName(lvm, "a---b"), "a-/b");
    EXPECT_EQ(ReadableMapperName(lvm, "a----b-c"), "a--b/c");
    EXPECT_EQ(ReadableMapperName(lvm, "dm-0"), "dm/0");
    EXPECT_EQ(ReadableMapperName(lvm, "plain"), "plain");
}

TEST(ReadableMapperName, DecodesEscapesAndKeepsTheHyphensOfOtherDevices) {
    EXPECT_EQ(ReadableMapperName("mpath-1", "my\\x20disk--a"), "my disk--a");
    EXPECT_EQ(ReadableMapperName("CRYPT-LUKS2-0-luks-1", "luks-0123-4567"), "luks-0123-4567");
}

TEST(FindMapperPartition, ReadsNumberAndUuidOfTheWhole) {
    const auto found = FindMapperPartition("part12-mpath-3600a");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->number, 12U);
    EXPECT_EQ(found->wholeUuid, "mpath-3600a");
    for (const char* uuid : {"", "mpath-3600a", "part-mpath-3600a", "part1", "part1-", "partx-mpath-1"}) {
        EXPECT_FALSE(FindMapperPartition(uuid).has_value()) << uuid;
    }
}

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

// A container, an array in it, the same while it may only be read, and two of md's own formats.
TEST(LogicalDisks, ListArraysInContainersButNotTheContainers) {
    TCollected collected;
    Collect(Array("md127", "external:imsm") + Array("md126", "external:/md127/0") +
                Array("md125", "external:-md127/1") + Array("md1", "1.2") + Array("md0", "none"),
            collected);
    EXPECT_THAT(collected.GetAll(logical, "ElementName"), ElementsAre("md0", "md1", "md125", "md126"));
}

TEST(LogicalDisks, AreCollectedIfTheirLayersFormACircle) {
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

// ---- every row of the classes

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
