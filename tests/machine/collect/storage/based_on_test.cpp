// CIM_BasedOn: one instance for each pair of a partition or volume and a device below it.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// "Dependent on Antecedent", with the order where there is one.
std::vector<std::string> ListPairs(const TCollected& collected) {
    std::vector<std::string> pairs;
    for (std::size_t i = 0; i < collected.CountInstances("CIM_BasedOn"); ++i) {
        const std::string order = collected.Get("CIM_BasedOn", "OrderIndex", i);
        pairs.push_back(collected.Get("CIM_BasedOn", "Dependent", i) + " on " +
                        collected.Get("CIM_BasedOn", "Antecedent", i) +
                        (order == "absent" ? "" : " at " + order));
    }
    return pairs;
}

std::string MakeDisk(const std::string& name) {
    const std::string folder = "/sys/devices/pci0000:00/0000:00:01.0/virtio" + name + "/block/" + name;
    return "/sys/block/" + name + " -> " + folder + "\n" + folder + "/device -> ../..\n" +
           "/sys/devices/pci0000:00/0000:00:01.0/virtio" + name + "/subsystem -> /sys/bus/virtio\n" + folder +
           "/serial = " + name + "-serial\n" + folder + "/size = 4096\n";
}

std::string MakePartition(const std::string& disk, const std::string& name) {
    return "/sys/devices/pci0000:00/0000:00:01.0/virtio" + disk + "/block/" + disk + "/" + name +
           "/partition = 1\n";
}

std::string MakeMapped(const std::string& name, const std::string& mapperName, const std::string& uuid,
                       const std::vector<std::string>& members) {
    const std::string folder = "/sys/devices/virtual/block/" + name;
    std::string tree = "/sys/block/" + name + " -> " + folder + "\n" + folder + "/dm/name = " + mapperName +
                       "\n" + folder + "/dm/uuid = " + uuid + "\n";
    for (const std::string& member : members) {
        tree += folder + "/slaves/" + member + "/\n";
    }
    return tree;
}

TEST(BasedOn, PutsAPartitionOnItsDisk) {
    TCollected collected;
    Collect(MakeDisk("vda") + MakePartition("vda", "vda1"), collected);
    EXPECT_THAT(ListPairs(collected), ElementsAre("CIM_DiskPartition.DeviceID=\"vda-serial-part1\" on "
                                                  "CIM_DiskDrive.DeviceID=\"vda-serial\""));
}

TEST(BasedOn, PutsAnArrayOnItsMembersWithTheirPlaces) {
    TCollected collected;
    const std::string folder = "/sys/devices/virtual/block/md0";
    Collect(MakeDisk("vda") + MakeDisk("vdb") + MakeDisk("vdc") + "/sys/block/md0 -> " + folder + "\n" +
                folder + "/md/array_state = clean\n" + folder + "/md/level = raid1\n" + folder +
                "/md/uuid = 12345678-9abc-def0-1234-56789abcdef0\n" + folder + "/slaves/vda/\n" + folder +
                "/slaves/vdb/\n" + folder + "/slaves/vdc/\n" + folder + "/md/dev-vda/slot = 1\n" + folder +
                "/md/dev-vdb/slot = 0\n" + folder + "/md/dev-vdc/slot = none\n",
            collected);
    const std::string array =
        "KELSG_LogicalDisk.DeviceID=\"12345678-9abc-def0-1234-56789abcdef0\" on CIM_DiskDrive.DeviceID=";
    EXPECT_THAT(ListPairs(collected), ElementsAre(array + "\"vda-serial\" at 2",
                                                  array + "\"vdb-serial\" at 1", array + "\"vdc-serial\""));
}

TEST(BasedOn, HasTheRolesAndStatesOfTheMembersOfAnArray) {
    TCollected collected;
    const std::string folder = "/sys/devices/virtual/block/md0";
    std::string tree = "/sys/block/md0 -> " + folder + "\n" + folder + "/md/array_state = clean\n" + folder +
                       "/md/level = raid5\n";
    const std::vector<std::array<std::string, 3>> members = {
        {"vda", "0", "in_sync"},
        {"vdb", "1", "spare"},
        {"vdc", "none", "spare"},
        {"vdd", "2", "in_sync,replacement"},
        {"vde", "journal", "journal"},
        {"vdf", "none", "faulty"},
        {"vdg", "3", "in_sync,write_mostly"},
    };
    for (const auto& [name, slot, state] : members) {
        tree += MakeDisk(name);
        tree += folder + "/slaves/" + name + "/\n";
        tree += folder + "/md/dev-" + name + "/slot = " + slot + "\n";
        tree += folder + "/md/dev-" + name + "/state = " + state + "\n";
    }
    Collect(tree, collected);
    EXPECT_THAT(collected.GetAll("CIM_BasedOn", "OrderIndex"),
                ElementsAre("1", "2", "absent", "3", "absent", "absent", "4"));
    EXPECT_THAT(collected.GetAll("CIM_BasedOn", "Role"),
                ElementsAre("member", "member", "spare", "replacement", "journal", "absent", "member"));
    EXPECT_THAT(collected.GetAll("CIM_BasedOn", "State"),
                ElementsAre("in_sync", "spare", "spare", "in_sync,replacement", "journal", "faulty",
                            "in_sync,write_mostly"));
}

TEST(BasedOn, HasTheStatesOfThePathsOfAMultipathSet) {
    TCollected collected;
    const std::string device = "/sys/devices/pci0000:00/0000:00:01.0/virtio";
    Collect(MakeDisk("vda") + MakeDisk("vdb") +
                MakeMapped("dm-0", "mpatha", "mpath-3600a098000000001", {"vda", "vdb"}) + device +
                "vda/state = running\n" + device + "vda/access_state = active/optimized\n" + device +
                "vdb/state = offline\n",
            collected);
    EXPECT_THAT(collected.GetAll("CIM_BasedOn", "Role"), ElementsAre("path", "path"));
    EXPECT_THAT(collected.GetAll("CIM_BasedOn", "State"), ElementsAre("running,active/optimized", "offline"));
}

TEST(BasedOn, ReplacesALayerWithoutAnInstanceByTheDevicesBelowIt) {
    TCollected collected;
    const std::string group(32, 'G');
    const std::string volume(32, 'V');
    Collect(MakeDisk("vda") + MakeDisk("vdb") +
                MakeMapped("dm-0", "vg-data", "LVM-" + group + volume, {"dm-1", "dm-2"}) +
                MakeMapped("dm-1", "vg-data_rimage_0", "LVM-" + group + std::string(32, 'X'), {"vda"}) +
                MakeMapped("dm-2", "vg-data_rimage_1", "LVM-" + group + std::string(32, 'Y'), {"vda", "vdb"}),
            collected);
    const std::string logical =
        "KELSG_LogicalDisk.DeviceID=\"" + group + volume + "\" on CIM_DiskDrive.DeviceID=";
    EXPECT_THAT(ListPairs(collected), ElementsAre(logical + "\"vda-serial\"", logical + "\"vdb-serial\""));
}

TEST(BasedOn, EndsOnACycleOfLayers) {
    TCollected collected;
    const std::string group(32, 'G');
    Collect(
        MakeMapped("dm-0", "vg-data", "LVM-" + group + std::string(32, 'V'), {"dm-1"}) +
            MakeMapped("dm-1", "vg-data_rimage_0", "LVM-" + group + std::string(32, 'X'), {"dm-1", "dm-0"}),
        collected);
    EXPECT_THAT(ListPairs(collected), IsEmpty());
}

TEST(BasedOn, LeavesOutADeviceBelowThatHasNoInstance) {
    TCollected collected;
    Collect(MakeMapped("dm-0", "secret", "CRYPT-LUKS2-0123456789abcdef0123456789abcdef-secret", {"loop0"}),
            collected);
    EXPECT_EQ(collected.CountInstances("KELSG_LogicalDisk"), 1U);
    EXPECT_THAT(ListPairs(collected), IsEmpty());
}

// Every instance with a DeviceID, in the form of a reference to it.
std::set<std::string> ListTargets(const TMemoryNamespace& source) {
    std::set<std::string> targets;
    for (const auto& cimClass : source.GetClasses()) {
        for (const auto& instance : cimClass->GetInstances()) {
            if (const TCIMValue* key = instance->Find("DeviceID")) {
                targets.insert(cimClass->GetName() + ".DeviceID=\"" + key->ToString(10) + "\"");
            }
        }
    }
    return targets;
}

TEST(BasedOn, RefersToInstancesOnlyOnEveryMachine) {
    std::size_t references = 0;
    for (const auto& entry : std::filesystem::directory_iterator(NOXINFO_MACHINES)) {
        std::ifstream file(entry.path() / "tree.txt", std::ios::binary);
        if (!file) {
            continue;
        }
        TCollected collected;
        Collect(std::string(std::istreambuf_iterator<char>(file), {}), collected);
        const auto targets = ListTargets(collected.target);
        for (const char* end : {"Antecedent", "Dependent"}) {
            for (const std::string& reference : collected.GetAll("CIM_BasedOn", end)) {
                EXPECT_TRUE(targets.contains(reference)) << entry.path() << ": " << reference;
                ++references;
            }
        }
    }
    EXPECT_GE(references, 40U);
}

}  // namespace
}  // namespace NVORHOST
