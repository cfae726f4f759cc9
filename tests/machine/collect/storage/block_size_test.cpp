#include "machine/collect/storage/block_size.h"

#include "tests/machine/system/memory_files.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr const char* disk = "/sys/block/sda";

TEST(SectorsToBytes, CountsSectorsOf512Bytes) {
    EXPECT_EQ(SectorsToBytes(0), 0U);
    EXPECT_EQ(SectorsToBytes(1), 512U);
    EXPECT_EQ(SectorsToBytes(7814037168), 4000787030016U);
}

TEST(ReadSectors, ReadsTheSizeOfTheDevice) {
    TMemoryFiles files;
    files.AddFile("/sys/block/sda/size", "7814037168\n");
    EXPECT_EQ(ReadSectors(files, disk), 7814037168U);
}

TEST(ReadSectors, ReturnsNulloptForAMissingOrMalformedSize) {
    TMemoryFiles files;
    EXPECT_EQ(ReadSectors(files, disk), std::nullopt);
    for (const char* text : {"", "\n", "-1\n", "12 sectors\n", "18446744073709551616\n"}) {
        files.AddFile("/sys/block/sda/size", text);
        EXPECT_EQ(ReadSectors(files, disk), std::nullopt) << text;
    }
    files.AddRefusal("/sys/block/sda/size", EReadStatus::denied);
    EXPECT_EQ(ReadSectors(files, disk), std::nullopt);
}

TEST(ReadBlockSize, ReadsTheLogicalBlockSizeOfTheQueue) {
    TMemoryFiles files;
    EXPECT_EQ(ReadBlockSize(files, disk), std::nullopt);
    files.AddFile("/sys/block/sda/queue/physical_block_size", "512\n");
    EXPECT_EQ(ReadBlockSize(files, disk), std::nullopt);
    files.AddFile("/sys/block/sda/queue/logical_block_size", "4096\n");
    EXPECT_EQ(ReadBlockSize(files, disk), 4096U);
}

}  // namespace
}  // namespace NVORHOST
