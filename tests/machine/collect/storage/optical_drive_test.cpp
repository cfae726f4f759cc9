#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

TEST(OpticalDrives, AreDvdDrivesByTheKernelThenUdevThenTheModel) {
    const auto isDvd = [](const std::string& tree) {
        TCollected collected;
        Collect("/sys/block/sr0/dev = 11:0\n" + tree, collected);
        EXPECT_EQ(collected.CountInstances("KELSG_DVDDrive") + collected.CountInstances("KELSG_CDROMDrive"),
                  1U);
        return collected.CountInstances("KELSG_DVDDrive") == 1;
    };
    const std::string kernelInfo = "/proc/sys/dev/cdrom/info:\n| drive name: sr0\n| Can read DVD: ";
    const std::string named = "/sys/block/sr0/device/model = DVD-ROM\n";
    const std::string udevRecord = "/run/udev/data/b11:0:\n| E:ID_CDROM=1\n";
    EXPECT_TRUE(isDvd(kernelInfo + "1\n" + udevRecord));
    EXPECT_FALSE(isDvd(kernelInfo + "0\n" + udevRecord + "| E:ID_CDROM_DVD=1\n" + named));
    EXPECT_TRUE(isDvd(udevRecord + "| E:ID_CDROM_DVD=1\n"));
    EXPECT_FALSE(isDvd(udevRecord + named));
    EXPECT_TRUE(isDvd(named));
    EXPECT_FALSE(isDvd("/sys/block/sr0/device/model = CD-RW\n"));
    EXPECT_FALSE(isDvd(""));
}

TEST(OpticalDrives, HaveNoSizesWithoutADisc) {
    const auto size = [](const std::string& tree) {
        TCollected collected;
        Collect("/sys/block/sr0/dev = 11:0\n/sys/block/sr0/queue/logical_block_size = 2048\n" + tree,
                collected);
        return collected.Get("KELSG_CDROMDrive", "MaxMediaSize");
    };
    const std::string udevRecord = "/run/udev/data/b11:0:\n| E:ID_CDROM=1\n";
    EXPECT_EQ(size("/sys/block/sr0/size = 2000\n"), "1024");
    EXPECT_EQ(size("/sys/block/sr0/size = 2000\n" + udevRecord + "| E:ID_CDROM_MEDIA=1\n"), "1024");
    EXPECT_EQ(size("/sys/block/sr0/size = 2000\n" + udevRecord), "absent");
    EXPECT_EQ(size("/sys/block/sr0/size = 2097151\n"), "absent");
    EXPECT_EQ(size("/sys/block/sr0/size = 0\n"), "absent");
}

TEST(OpticalDrives, UseModelAndSerialNumberOfUdevForAtaDrives) {
    TCollected collected;
    Collect(
        "/sys/block/sr0/dev = 11:0\n/sys/block/sr0/device/vendor = SAMPLE\n"
        "/sys/block/sr0/device/model = DVD-ROM SD-M\n/run/udev/data/b11:0:\n| E:ID_ATA=1\n"
        "| E:ID_MODEL_ENC=SAMPLE\\x20DVD-ROM\\x20SD-M1802\\x20\\x20\n| E:ID_SERIAL_SHORT=X93K1\n",
        collected);
    EXPECT_EQ(collected.Get("KELSG_DVDDrive", "ElementName"), "SAMPLE DVD-ROM SD-M1802");
    EXPECT_EQ(collected.Get("KELSG_DVDDrive", "DeviceID"), "X93K1");
}

TEST(OpticalDrives, OfBothClassesHaveUniqueKeys) {
    TCollected collected;
    Collect(
        "/sys/block/sr0/device/wwid = naa.5001\n/sys/block/sr0/device/model = CD-RW\n"
        "/sys/block/sr1/device/wwid = naa.5001\n/sys/block/sr1/device/model = DVD-ROM\n",
        collected);
    EXPECT_THAT(collected.GetAll("KELSG_CDROMDrive", "DeviceID"), ElementsAre("naa.5001@sr0"));
    EXPECT_THAT(collected.GetAll("KELSG_DVDDrive", "DeviceID"), ElementsAre("naa.5001@sr1"));
    EXPECT_THAT(collected.GetReport("optical-drive").notes,
                ElementsAre("2 optical drives share the key naa.5001; their positions tell them apart"));
}

}  // namespace
}  // namespace NVORHOST
