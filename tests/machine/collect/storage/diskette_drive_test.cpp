#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* diskette = "KELSG_DisketteDrive";

TEST(DisketteDrives, AreNamedByTheTypeInTheCmosMemory) {
    TCollected collected;
    Collect(
        "/sys/block/fd0/device/cmos = 4\n/sys/block/fd1/device/cmos = 2\n/sys/block/fd2/device/cmos = 9\n",
        collected);
    EXPECT_THAT(
        collected.GetAll(diskette, "ElementName"),
        ElementsAre("3.5\" 1.44 MB diskette drive", "5.25\" 1.2 MB diskette drive", "Diskette drive"));
    EXPECT_EQ(collected.Get(diskette, "Description"), "Diskette drive");
}

TEST(DisketteDrives, HaveSizesOnlyWithADiskette) {
    const auto size = [](const std::string& sectors) {
        TCollected collected;
        Collect("/sys/block/fd0/size = " + sectors + "\n/sys/block/fd0/queue/logical_block_size = 512\n",
                collected);
        return collected.Get(diskette, "MaxMediaSize") + " " + collected.Get(diskette, "DefaultBlockSize");
    };
    EXPECT_EQ(size("2880"), "1474 512");
    EXPECT_EQ(size("8"), "absent absent");
    EXPECT_EQ(size("0"), "absent absent");
}

TEST(DisketteDrives, AreKeyedByPositionElseByName) {
    TCollected collected;
    Collect(
        "/sys/block/fd0 -> /sys/devices/platform/floppy.0/block/fd0\n"
        "/sys/devices/platform/floppy.0/block/fd0/size = 8\n/sys/block/fd1/size = 8\n",
        collected);
    EXPECT_THAT(collected.GetAll(diskette, "DeviceID"), ElementsAre("floppy.0", "fd1"));
}

TEST(DisketteDrives, ExcludeOtherNamesThatBeginWithFd) {
    TCollected collected;
    Collect("/sys/block/fd0u1440/size = 8\n/sys/block/fdx/size = 8\n", collected);
    EXPECT_EQ(collected.CountInstances(diskette), 0U);
}

}  // namespace
}  // namespace NVORHOST
