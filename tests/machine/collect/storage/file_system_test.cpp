// CIM_LocalFileSystem and CIM_ResidesOnExtent.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char fileSystem[] = "CIM_LocalFileSystem";

constexpr char disk[] =
    "/sys/block/vda -> /sys/devices/pci0000:00/0000:00:01.0/virtio0/block/vda\n"
    "/sys/devices/pci0000:00/0000:00:01.0/virtio0/block/vda/device -> ../..\n"
    "/sys/devices/pci0000:00/0000:00:01.0/virtio0/subsystem -> /sys/bus/virtio\n"
    "/sys/devices/pci0000:00/0000:00:01.0/virtio0/block/vda/serial = DISK0001\n"
    "/sys/devices/pci0000:00/0000:00:01.0/virtio0/block/vda/size = 4096\n"
    "/sys/devices/pci0000:00/0000:00:01.0/virtio0/block/vda/vda1/partition = 1\n"
    "/sys/devices/pci0000:00/0000:00:01.0/virtio0/block/vda/vda1/dev = 254:1\n"
    "/sys/class/block/vda1 -> /sys/devices/pci0000:00/0000:00:01.0/virtio0/block/vda/vda1\n"
    "/sys/dev/block/254:1 -> /sys/devices/pci0000:00/0000:00:01.0/virtio0/block/vda/vda1\n"
    "/run/udev/data/b254:1:\n"
    "| E:ID_FS_LABEL=my_disk\n"
    "| E:ID_FS_LABEL_ENC=my\\x20disk\n"
    "| E:ID_FS_UUID=4b1c7e70-0000-4000-8000-000000000001\n"
    "| E:ID_FS_UUID_ENC=4b1c7e70-0000-4000-8000-000000000001\n";

// A machine with the disk above and these lines of /proc/self/mountinfo.
std::string WithMounts(const std::string& lines) {
    std::string tree = std::string(disk) + "/proc/self/mountinfo:\n";
    for (std::size_t start = 0; start < lines.size();) {
        const auto end = lines.find('\n', start);
        tree += "| " + lines.substr(start, end - start) + "\n";
        start = end + 1;
    }
    return tree;
}

TEST(FileSystem, HasEveryPropertyOfAMountedPartition) {
    TCollected collected;
    Collect(WithMounts("20 1 254:1 / / rw,noatime - ext4 /dev/vda1 rw,errors=continue\n") +
                "@FileSystemSpace = / 4096 2000000 400000\n",
            collected);
    ASSERT_EQ(collected.CountInstances(fileSystem), 1U);
    EXPECT_EQ(collected.Get(fileSystem, "ElementName"), "my disk");
    EXPECT_EQ(collected.Get(fileSystem, "Description"), "ext4 file system");
    EXPECT_EQ(collected.Get(fileSystem, "Name"), "4b1c7e70-0000-4000-8000-000000000001");
    EXPECT_EQ(collected.Get(fileSystem, "Root"), "/");
    EXPECT_EQ(collected.Get(fileSystem, "FileSystemType"), "ext4");
    EXPECT_EQ(collected.Get(fileSystem, "Label"), "my disk");
    EXPECT_EQ(collected.Get(fileSystem, "UUID"), "4b1c7e70-0000-4000-8000-000000000001");
    EXPECT_EQ(collected.Get(fileSystem, "BlockSize"), "4096");
    EXPECT_EQ(collected.Get(fileSystem, "FileSystemSize"), "2000000");
    EXPECT_EQ(collected.Get(fileSystem, "AvailableSpace"), "400000");
    EXPECT_EQ(collected.Get(fileSystem, "ReadOnly"), "false");
    EXPECT_THAT(collected.GetAll("CIM_ResidesOnExtent", "Antecedent"),
                ElementsAre("CIM_DiskPartition.DeviceID=\"DISK0001-part1\""));
    EXPECT_THAT(collected.GetAll("CIM_ResidesOnExtent", "Dependent"),
                ElementsAre("CIM_LocalFileSystem.Name=\"4b1c7e70-0000-4000-8000-000000000001\""));
}

TEST(FileSystem, IsReadOnlyByTheOptionsOfTheFileSystemNotOfTheMount) {
    TCollected collected;
    Collect(WithMounts("20 1 254:1 / / ro - ext4 /dev/vda1 rw\n21 20 254:2 / /b rw - ext4 /dev/vda2 ro\n"),
            collected);
    EXPECT_THAT(collected.GetAll(fileSystem, "ReadOnly"), ElementsAre("false", "true"));
}

TEST(FileSystem, WithoutUdevIsNamedByItsPartitionOrElseByItsMountPoint) {
    TCollected collected;
    Collect(std::string(disk).substr(0, std::string(disk).find("/run/udev")) +
                "/proc/self/mountinfo:\n"
                "| 20 1 254:1 / / rw - ext4 /dev/vda1 rw\n"
                "| 21 20 7:0 / /snap/core/1 ro - squashfs /dev/loop0 ro\n",
            collected);
    EXPECT_THAT(collected.GetAll(fileSystem, "Name"), ElementsAre("DISK0001-part1", "/snap/core/1"));
    EXPECT_THAT(collected.GetAll(fileSystem, "ElementName"), ElementsAre("/", "/snap/core/1"));
    EXPECT_EQ(collected.Get(fileSystem, "FileSystemSize"), "absent");
}

TEST(FileSystem, IsOneInstanceForAllMountsWithTheShortestMountPointOfTheWhole) {
    TCollected collected;
    Collect(WithMounts("20 1 0:30 / / rw - overlay overlay rw\n"
                       "21 20 254:1 /etc/hosts /h rw - ext4 /dev/vda1 rw\n"
                       "22 20 254:1 / /mnt/long rw - ext4 /dev/vda1 rw\n"
                       "23 20 254:1 / /mnt/a rw - ext4 /dev/vda1 rw\n"),
            collected);
    EXPECT_THAT(collected.GetAll(fileSystem, "Root"), ElementsAre("/mnt/a"));
}

TEST(FileSystem, PrefersAMountThatIsNotHidden) {
    TCollected collected;
    Collect(WithMounts("20 1 0:30 / / rw - overlay overlay rw\n"
                       "21 20 254:1 / /a rw - ext4 /dev/vda1 rw\n"
                       "22 21 0:40 / /a rw - nfs4 server:/export rw\n"
                       "23 20 254:1 / /mnt/b rw - ext4 /dev/vda1 rw\n"),
            collected);
    EXPECT_THAT(collected.GetAll(fileSystem, "Root"), ElementsAre("/mnt/b"));
}

// Records the mount points whose space is asked for.
struct TSpaceLog final : ISystemCalls {
    std::optional<std::string> ReadKernelRelease() const override { return std::nullopt; }
    std::optional<std::string> ReadNodeName() const override { return std::nullopt; }
    std::optional<std::string> ReadArchitecture() const override { return std::nullopt; }
    std::optional<std::uint32_t> ReadPageSizeBytes() const override { return std::nullopt; }
    std::optional<std::uint32_t> ReadClockTicksPerSecond() const override { return std::nullopt; }
    std::optional<std::string> ReadHypervisorSignature() const override { return std::nullopt; }
    std::optional<int> ReadUtcOffsetMinutes(std::int64_t) const override { return std::nullopt; }
    std::optional<std::vector<TInterfaceAddress>> ReadInterfaceAddresses() const override {
        return std::nullopt;
    }
    std::optional<TFileSystemSpace> ReadFileSystemSpace(std::string_view mountPoint) const override {
        mountPoints.emplace_back(mountPoint);
        return std::nullopt;
    }

    mutable std::vector<std::string> mountPoints;
};

std::vector<std::string> ListSpaceCalls(const std::string& mounts) {
    const TMachine machine = ParseMachineTree(WithMounts(mounts));
    const TSpaceLog calls;
    TCollected collected;
    Collect(machine.files, calls, collected);
    return calls.mountPoints;
}

TEST(FileSystem, MakesNoCallForNetworkFuseClusterAndMemoryFileSystems) {
    EXPECT_THAT(ListSpaceCalls("20 1 0:30 / / rw - overlay overlay rw\n"
                               "21 20 0:40 / /a rw - nfs4 server:/export rw\n"
                               "22 20 0:41 / /b rw - cifs //server/share rw\n"
                               "23 20 0:42 / /c rw - fuse.sshfs anna@server:/home rw\n"
                               "24 20 254:2 / /d rw - fuseblk /dev/vda2 rw\n"
                               "25 20 0:43 / /e rw - tmpfs tmpfs rw\n"
                               "26 20 254:3 / /f rw - gfs2 /dev/vda3 rw\n"
                               "27 20 0:44 / /g rw - autofs systemd-1 rw\n"
                               "28 20 0:45 / /h rw - ceph server:/ rw\n"),
                IsEmpty());
}

TEST(FileSystem, MakesNoCallForAMountPointBelowANetworkOrFuseFileSystem) {
    EXPECT_THAT(ListSpaceCalls("20 1 0:30 / / rw - overlay overlay rw\n"
                               "21 20 0:40 / /a rw - nfs4 server:/export rw\n"
                               "22 21 254:1 / /a/b rw - ext4 /dev/vda1 rw\n"
                               "23 20 0:41 / /c rw - fuse.mergerfs pool rw\n"
                               "24 23 254:2 / /c/d rw - xfs /dev/vda2 rw\n"
                               "25 24 254:3 / /c/d/e rw - xfs /dev/vda3 rw\n"),
                IsEmpty());
}

TEST(FileSystem, MakesNoCallForAMountPointUnderANetworkFileSystem) {
    EXPECT_THAT(ListSpaceCalls("20 1 0:30 / / rw - overlay overlay rw\n"
                               "21 20 254:1 / /a/b rw - ext4 /dev/vda1 rw\n"
                               "22 20 0:40 / /a rw - nfs4 server:/export rw\n"
                               "23 20 254:2 / /c rw - ext4 /dev/vda2 rw\n"
                               "24 23 0:41 / /c rw - nfs4 server:/export rw\n"),
                IsEmpty());
}

TEST(FileSystem, MakesOneCallForEachLocalFileSystem) {
    EXPECT_THAT(ListSpaceCalls("20 1 254:1 / / rw - ext4 /dev/vda1 rw\n"
                               "21 20 0:40 / /boot rw - autofs systemd-1 rw\n"
                               "22 21 254:2 / /boot rw - vfat /dev/vda2 rw\n"
                               "23 20 254:1 /var /srv/var rw - ext4 /dev/vda1 rw\n"
                               "24 20 0:50 /@home /home rw - btrfs /dev/vda3 rw\n"
                               "25 20 0:50 /@log /var/log rw - btrfs /dev/vda3 rw\n"),
                testing::UnorderedElementsAre("/", "/boot", "/home"));
}

TEST(FileSystem, FindsLabelAndUuidOfBtrfsByItsSource) {
    TCollected collected;
    Collect(WithMounts("20 1 0:50 /@ / rw - btrfs /dev/vda1 rw,subvol=/@\n"), collected);
    EXPECT_THAT(collected.GetAll(fileSystem, "Name"), ElementsAre("4b1c7e70-0000-4000-8000-000000000001"));
    EXPECT_THAT(collected.GetAll("CIM_ResidesOnExtent", "Antecedent"),
                ElementsAre("CIM_DiskPartition.DeviceID=\"DISK0001-part1\""));
}

TEST(FileSystem, ResidesOnEveryDeviceOfBtrfs) {
    TCollected collected;
    Collect(WithMounts("20 1 0:50 /@ / rw - btrfs /dev/vda1 rw,subvol=/@\n") +
                "/sys/fs/btrfs/4b1c7e70-0000-4000-8000-000000000001/devices/vda/\n"
                "/sys/fs/btrfs/4b1c7e70-0000-4000-8000-000000000001/devices/vda1/\n",
            collected);
    EXPECT_THAT(
        collected.GetAll("CIM_ResidesOnExtent", "Antecedent"),
        ElementsAre("CIM_DiskDrive.DeviceID=\"DISK0001\"", "CIM_DiskPartition.DeviceID=\"DISK0001-part1\""));
}

TEST(FileSystem, FindsALogicalVolumeByTheMappersNameWithoutTheDeviceNumbers) {
    TCollected collected;
    const std::string uuid = "LVM-" + std::string(32, 'G') + std::string(32, 'V');
    Collect(WithMounts("20 1 253:0 / / rw - xfs /dev/mapper/vg0-home rw\n") +
                "/sys/block/dm-0 -> /sys/devices/virtual/block/dm-0\n"
                "/sys/devices/virtual/block/dm-0/dm/name = vg0-home\n"
                "/sys/devices/virtual/block/dm-0/dm/uuid = " +
                uuid + "\n",
            collected);
    EXPECT_THAT(collected.GetAll("CIM_ResidesOnExtent", "Antecedent"),
                ElementsAre("KELSG_LogicalDisk.DeviceID=\"" + uuid.substr(4) + "\""));
}

}  // namespace
}  // namespace NVORHOST
