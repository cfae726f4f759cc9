// The partitions of disks, of volumes that the kernel builds from disks, and of multipath sets.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* partition = "CIM_DiskPartition";

// A partition that the kernel created from the table on a block device.
std::string KernelPartition(const std::string& whole, const std::string& name, int number,
                            const std::string& uuid) {
    const std::string folder = "/sys/block/" + whole + "/" + name;
    return folder + "/partition = " + std::to_string(number) + "\n" + folder + "/size = 4096\n" + folder +
           "/uevent = PARTUUID=" + uuid + "\n";
}

// A multipath set of the disks sda and sdb, each of which shows the partition table.
std::string MultipathSet() {
    return "/sys/block/dm-0/dm/name = my\\x20set\n/sys/block/dm-0/dm/uuid = mpath-3600a0980\n"
           "/sys/block/dm-0/queue/logical_block_size = 512\n/sys/block/dm-0/size = 8192\n"
           "/sys/block/dm-0/slaves/sda -> ../../sda\n/sys/block/dm-0/slaves/sdb -> ../../sdb\n" +
           KernelPartition("sda", "sda1", 1, "1234-01") + KernelPartition("sdb", "sdb1", 1, "1234-01");
}

TEST(DiskPartitions, ListThePartitionsOfAMultipathSetOnce) {
    TCollected collected;
    Collect(
        MultipathSet() +
            "/sys/block/dm-1/dm/name = my\\x20set-part1\n/sys/block/dm-1/dm/uuid = part1-mpath-3600a0980\n"
            "/sys/block/dm-1/size = 4096\n/sys/block/dm-1/dev = 253:1\n"
            "/run/udev/data/b253:1:\n| E:ID_PART_ENTRY_UUID=1234-01\n| E:ID_PART_ENTRY_SCHEME=dos\n"
            "| E:ID_PART_ENTRY_TYPE=0x83\n",
        collected);
    EXPECT_THAT(collected.GetAll(partition, "DeviceID"), ElementsAre("1234-01"));
    EXPECT_THAT(collected.GetAll(partition, "ElementName"), ElementsAre("dm-1"));
    EXPECT_THAT(collected.GetAll(partition, "Description"), ElementsAre("DOS partition 1 of my set"));
    EXPECT_THAT(collected.GetAll(partition, "NumberOfBlocks"), ElementsAre("4096"));
    EXPECT_THAT(collected.GetAll(partition, "PrimaryPartition"), ElementsAre("true"));
}

TEST(DiskPartitions, FallBackToTheFirstPathOfASetWithoutMappedPartitions) {
    TCollected collected;
    Collect(MultipathSet(), collected);
    EXPECT_THAT(collected.GetAll(partition, "ElementName"), ElementsAre("sda1"));
    EXPECT_THAT(collected.GetAll(partition, "Description"), ElementsAre("Partition 1 of my set"));
}

TEST(DiskPartitions, KeepOtherDisksApartFromAMultipathSet) {
    TCollected collected;
    Collect(MultipathSet() + KernelPartition("sdc", "sdc1", 1, "5678-01"), collected);
    EXPECT_THAT(collected.GetAll(partition, "ElementName"), ElementsAre("sdc1", "sda1"));
}

TEST(DiskPartitions, ListThePartitionsOfACachedDiskOnce) {
    TCollected collected;
    Collect(
        "/sys/block/bcache0 -> ../devices/virtual/block/bcache0\n"
        "/sys/devices/virtual/block/bcache0/size = 8192\n"
        "/sys/devices/virtual/block/bcache0/queue/logical_block_size = 512\n"
        "/sys/devices/virtual/block/bcache0/bcache/backing_dev_uuid = 11111111-2222\n"
        "/sys/devices/virtual/block/bcache0/slaves/sda -> ../../../../../block/sda\n"
        "/sys/devices/virtual/block/bcache0/bcache0p1/partition = 1\n"
        "/sys/devices/virtual/block/bcache0/bcache0p1/size = 4096\n"
        "/sys/block/sda/device/state = running\n",
        collected);
    EXPECT_THAT(collected.GetAll(partition, "ElementName"), ElementsAre("bcache0p1"));
    EXPECT_THAT(collected.GetAll(partition, "DeviceID"), ElementsAre("11111111-2222-part1"));
    EXPECT_THAT(collected.GetAll(partition, "Description"), ElementsAre("Partition 1 of bcache0"));
    EXPECT_THAT(collected.GetAll(partition, "NumberOfBlocks"), ElementsAre("4096"));
    EXPECT_THAT(collected.GetAll(partition, "OperationalStatus"), ElementsAre("{2}"));
    EXPECT_THAT(collected.GetAll("KELSG_LogicalDisk", "ElementName"), IsEmpty());
}

TEST(DiskPartitions, ListTheMappedPartitionsOfALogicalVolume) {
    const std::string uuid = "LVM-" + std::string(64, 'x');
    TCollected collected;
    Collect("/sys/block/dm-0/dm/name = vg0-guest\n/sys/block/dm-0/dm/uuid = " + uuid +
                "\n/sys/block/dm-1/dm/name = vg0-guest2\n/sys/block/dm-1/dm/uuid = part2-" + uuid +
                "\n/sys/block/dm-2/dm/name = vg0-guest1\n/sys/block/dm-2/dm/uuid = part1-" + uuid + "\n",
            collected);
    EXPECT_THAT(collected.GetAll(partition, "ElementName"), ElementsAre("dm-2", "dm-1"));
    EXPECT_THAT(collected.GetAll(partition, "Description"),
                ElementsAre("Partition 1 of vg0/guest", "Partition 2 of vg0/guest"));
}

}  // namespace
}  // namespace NVORHOST
