#include "machine/collect/storage/udev_device.h"

#include "tests/machine/system/memory_files.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

class ReadUdevRecordTest : public testing::Test {
  protected:
    ReadUdevRecordTest() {
        files_.AddFile("/run/udev/data/b8:0", "E:ID_ATA=1\n");
        files_.AddFile("/run/udev/data/b8:16", "E:ID_ATA=0\n");
    }
    std::string Read() const { return ReadUdevRecord(files_, "/sys/block/sda"); }

    TMemoryFiles files_;
};

TEST_F(ReadUdevRecordTest, FindsTheRecordByTheDeviceNumber) {
    files_.AddFile("/sys/block/sda/dev", "8:16\n");
    EXPECT_EQ(Read(), "E:ID_ATA=0\n");
}

TEST_F(ReadUdevRecordTest, IsEmptyWithoutADeviceNumber) {
    EXPECT_EQ(Read(), "");
    files_.AddFile("/sys/block/sda/dev", "\n");
    EXPECT_EQ(Read(), "");
}

TEST_F(ReadUdevRecordTest, IsEmptyWithoutAReadableRecord) {
    files_.AddFile("/sys/block/sda/dev", "8:32\n");
    EXPECT_EQ(Read(), "");
    files_.AddRefusal("/run/udev/data/b8:32", EReadStatus::denied);
    EXPECT_EQ(Read(), "");
}

}  // namespace
}  // namespace NVORHOST
