#include "tests/machine/collect/collect_fixture.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(TapeDrives, AreListedOnceAndHaveABlockSizeOnlyIfItIsFixed) {
    const auto blockSize = [](const std::string& text) {
        TCollected collected;
        Collect("/sys/class/scsi_tape/st0/default_blksize = " + text +
                    "\n/sys/class/scsi_tape/nst0/default_blksize = 512\n"
                    "/sys/class/scsi_tape/st0m/default_blksize = 512\n",
                collected);
        EXPECT_EQ(collected.CountInstances("KELSG_TapeDrive"), 1U);
        return collected.Get("KELSG_TapeDrive", "DefaultBlockSize");
    };
    EXPECT_EQ(blockSize("65536"), "65536");
    EXPECT_EQ(blockSize("0"), "absent");
    EXPECT_EQ(blockSize("-1"), "absent");
}

TEST(TapeDrives, HaveModelSerialNumberAndState) {
    TCollected collected;
    Collect(
        "/sys/class/scsi_tape/st0/device/vendor = SAMPLE\n"
        "/sys/class/scsi_tape/st0/device/model = ULTRIUM-TD5\n"
        "/sys/class/scsi_tape/st0/device/wwid = naa.50014382c0ffee01\n"
        "/sys/class/scsi_tape/st0/device/state = offline\n",
        collected);
    EXPECT_EQ(collected.Get("KELSG_TapeDrive", "ElementName"), "SAMPLE ULTRIUM-TD5");
    EXPECT_EQ(collected.Get("KELSG_TapeDrive", "Description"), "SCSI tape drive");
    EXPECT_EQ(collected.Get("KELSG_TapeDrive", "DeviceID"), "naa.50014382c0ffee01");
    EXPECT_EQ(collected.Get("KELSG_TapeDrive", "OperationalStatus"), "{13}");
}

TEST(TapeDrives, WithoutAnIdentityAreKeyedByTheirPosition) {
    TCollected collected;
    Collect(
        "/sys/class/scsi_tape/st1 -> "
        "/sys/devices/pci0000:00/0000:00:0b.0/host2/target2:0:1/2:0:1:0/scsi_tape/st1\n"
        "/sys/devices/pci0000:00/0000:00:0b.0/host2/target2:0:1/2:0:1:0/scsi_tape/st1/dev = 9:1\n",
        collected);
    EXPECT_EQ(collected.Get("KELSG_TapeDrive", "DeviceID"), "0000:00:0b.0/0:1:0");
}

}  // namespace
}  // namespace NVORHOST
