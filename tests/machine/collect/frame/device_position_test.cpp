#include "machine/collect/frame/device_position.h"

#include "tests/machine/collect/collect_fixture.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ReadDevicePosition, NamesThePciFunctionAndThePortsOnThePath) {
    const TMachine machine = ParseMachineTree(
        "/sys/devices/pci0000:00/0000:00:1f.2/ata3/ata_port/ata3/port_no = 1\n"
        "/sys/devices/pci0000:00/0000:00:14.0/usb2/version =  3.00\n"
        "/sys/devices/pci0000:00/0000:00:02.0/host0/port-0:1/end_device-0:1/sas_device/end_device-0:1/"
        "sas_address = 0x5000c50000000005\n");
    const auto position = [&](const char* path) { return ReadDevicePosition(machine.files, path); };
    EXPECT_EQ(position("/sys/devices/pci0000:00/0000:00:1f.2/ata3/host2/target2:0:0/2:0:0:0/block/sdb"),
              "0000:00:1f.2/ata-1/0:0:0");
    EXPECT_EQ(
        position("/sys/devices/pci0000:00/0000:00:14.0/usb2/2-1/2-1:1.0/host8/target8:0:0/8:0:0:0/block/sdc"),
        "0000:00:14.0/usb3/1:1.0/0:0:0");
    EXPECT_EQ(
        position("/sys/devices/pci0000:00/0000:00:02.0/host0/port-0:1/end_device-0:1/target0:0:1/0:0:1:0/"
                 "block/sde"),
        "0000:00:02.0/sas-0x5000c50000000005/0");
    EXPECT_EQ(position("/sys/devices/pci0000:00/0000:00:04.0/0000:01:00.0/nvme/nvme0/nvme0n2"),
              "0000:01:00.0/n2");
    EXPECT_EQ(position("/sys/devices/pci0000:00/0000:00:02.0/virtio1/block/vda"), "0000:00:02.0");
    EXPECT_EQ(position("/sys/devices/vbd-51712/block/xvda"), "vbd-51712");
    EXPECT_EQ(position("/sys/devices/platform/soc/fe340000.mmc/mmc_host/mmc0/mmc0:aaaa/block/mmcblk0"),
              "soc/fe340000.mmc");
}

TEST(ReadDevicePosition, ReturnsNulloptForAPathWithoutALastingPart) {
    const TMemoryFiles files;
    EXPECT_EQ(ReadDevicePosition(files, ""), std::nullopt);
    EXPECT_EQ(ReadDevicePosition(files, "/sys/block/sda"), std::nullopt);
    EXPECT_EQ(ReadDevicePosition(files, "/sys/devices/virtual/block/loop0"), std::nullopt);
}

TEST(ReadDevicePosition, NumbersTheHostsOfAnAdapterThatHasSeveral) {
    const TMachine machine = ParseMachineTree(
        "/sys/devices/pci0000:00/0000:00:1f.2/host4/uevent = x\n"
        "/sys/devices/pci0000:00/0000:00:1f.2/host10/uevent = x\n");
    EXPECT_EQ(
        ReadDevicePosition(machine.files,
                           "/sys/devices/pci0000:00/0000:00:1f.2/host10/target10:0:0/10:0:0:0/block/sdb"),
        "0000:00:1f.2/host-2/0:0:0");
}

TEST(FindEntryDevice, ResolvesTheLinkOfTheEntry) {
    const TMachine machine = ParseMachineTree("/sys/block/sda -> ../devices/pci0000:00/block/sda\n");
    EXPECT_EQ(FindEntryDevice(machine.files, "/sys/block/sda"), "/sys/devices/pci0000:00/block/sda");
}

TEST(FindEntryDevice, AppendsTheNameOfAnEntryThatIsAFolder) {
    const TMachine machine = ParseMachineTree("/sys/block/sda/device -> ../../devices/pci0000:00/0:0:0:0\n");
    EXPECT_EQ(FindEntryDevice(machine.files, "/sys/block/sda"), "/sys/devices/pci0000:00/0:0:0:0/sda");
}

TEST(FindEntryDevice, ReturnsNulloptWithoutLinks) {
    EXPECT_EQ(FindEntryDevice(ParseMachineTree("/sys/block/sda/size = 8\n").files, "/sys/block/sda"),
              std::nullopt);
}

TEST(ReadEntryPosition, FallsBackToTheNameOfTheEntry) {
    const TMachine machine = ParseMachineTree(
        "/sys/block/fd0 -> ../devices/platform/floppy.0/block/fd0\n"
        "/sys/block/fd1 -> ../devices/virtual/block/fd1\n");
    EXPECT_EQ(ReadEntryPosition(machine.files, "/sys/block/fd0"), "floppy.0");
    EXPECT_EQ(ReadEntryPosition(machine.files, "/sys/block/fd1"), "fd1");
    EXPECT_EQ(ReadEntryPosition(machine.files, "/sys/block/fd2"), "fd2");
}

}  // namespace
}  // namespace NVORHOST
