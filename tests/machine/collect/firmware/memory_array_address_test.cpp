#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* arrayAddress = "KELSG_MAS";

std::string Table(const std::string& lines) {
    return "/sys/firmware/dmi/tables/DMI smbios:\n" + lines;
}

// Structures of a table are numbered from 0100h.
constexpr const char* array0100 = "| 16: 03 03 06 00 00 00 01 fe ff 04 00\n";

TEST(MemoryArrays, HaveAddressesInKibibytesAndSizesInBytes) {
    TCollected collected;
    Collect(Table(std::string(array0100) + "| 19: 00 00 40 00 ff ff 5f 00 00 01 02\n"), collected);
    ASSERT_EQ(collected.CountInstances(arrayAddress), 1U);
    EXPECT_EQ(collected.Get(arrayAddress, "ElementName"), "System memory 0x100000000-0x17fffffff");
    EXPECT_EQ(collected.Get(arrayAddress, "Description"), "Addresses of a memory array with multi-bit ECC");
    EXPECT_EQ(collected.Get(arrayAddress, "DeviceID"), "memory array 1 at 0x0000000100000000");
    EXPECT_EQ(collected.Get(arrayAddress, "BlockSize"), "1");
    EXPECT_EQ(collected.Get(arrayAddress, "NumberOfBlocks"), "2147483648");
    EXPECT_EQ(collected.Get(arrayAddress, "StartingAddress"), "4194304");
    EXPECT_EQ(collected.Get(arrayAddress, "EndingAddress"), "6291455");
    EXPECT_EQ(collected.Get(arrayAddress, "SequentialAccess"), "false");
    EXPECT_EQ(collected.Get(arrayAddress, "Volatile"), "true");
    EXPECT_EQ(collected.Get(arrayAddress, "ConsumableBlocks"), "absent");
}

TEST(MemoryArrays, AreVolatileByTheirUse) {
    const auto tell = [](const std::string& use) {
        TCollected collected;
        Collect(Table("| 16: 03 " + use +
                      " 03 00 00 00 01 fe ff 04 00\n| 19: 00 00 00 00 ff ff 0f 00 00 01 01\n"),
                collected);
        return collected.Get(arrayAddress, "ElementName") + " " + collected.Get(arrayAddress, "Volatile");
    };
    EXPECT_EQ(tell("01"), "Memory 0x0-0x3fffffff absent");
    EXPECT_EQ(tell("02"), "Memory 0x0-0x3fffffff absent");
    EXPECT_EQ(tell("03"), "System memory 0x0-0x3fffffff true");
    EXPECT_EQ(tell("04"), "Video memory 0x0-0x3fffffff true");
    EXPECT_EQ(tell("05"), "Flash memory 0x0-0x3fffffff false");
    EXPECT_EQ(tell("06"), "Non-volatile RAM 0x0-0x3fffffff false");
    EXPECT_EQ(tell("07"), "Cache memory 0x0-0x3fffffff true");
    EXPECT_EQ(tell("08"), "Memory 0x0-0x3fffffff absent");
}

TEST(MemoryArrays, DescribeTheirErrorCorrection) {
    const auto describe = [](const std::string& correction) {
        TCollected collected;
        Collect(Table("| 16: 03 03 " + correction +
                      " 00 00 00 01 fe ff 04 00\n| 19: 00 00 00 00 ff ff 0f 00 00 01 01\n"),
                collected);
        return collected.Get(arrayAddress, "Description");
    };
    EXPECT_EQ(describe("02"), "Addresses of a memory array");
    EXPECT_EQ(describe("03"), "Addresses of a memory array without error correction");
    EXPECT_EQ(describe("04"), "Addresses of a memory array with parity");
    EXPECT_EQ(describe("05"), "Addresses of a memory array with single-bit ECC");
    EXPECT_EQ(describe("06"), "Addresses of a memory array with multi-bit ECC");
    EXPECT_EQ(describe("07"), "Addresses of a memory array with CRC");
}

TEST(MemoryArrays, HaveTheirNumbersInTheKeyIfTheirStartsAreEqual) {
    TCollected collected;
    Collect(Table(std::string(array0100) + array0100 + "| 19: 00 00 00 00 ff ff 0f 00 00 01 02\n" +
                  "| 19: 00 00 00 00 ff ff 0f 00 01 01 02\n"),
            collected);
    EXPECT_THAT(collected.GetAll(arrayAddress, "DeviceID"),
                ElementsAre("memory array 1 at 0x0000000000000000", "memory array 2 at 0x0000000000000000"));
}

TEST(MemoryArrays, HaveOnlyAddressesIfTheTableLacksTheArray) {
    TCollected collected;
    Collect(Table("| 19: 00 00 00 00 ff ff 0f 00 99 99 02\n"), collected);
    EXPECT_EQ(collected.Get(arrayAddress, "DeviceID"), "memory array at 0x0000000000000000");
    EXPECT_EQ(collected.Get(arrayAddress, "Description"), "Addresses of a memory array");
    EXPECT_EQ(collected.Get(arrayAddress, "Volatile"), "absent");
}

TEST(MemoryArrays, HaveNoAddressesWithoutMemory) {
    TCollected collected;
    Collect(Table(std::string(array0100) + "| 19: 00 00 00 00 00 00 00 00 00 01 00\n"), collected);
    EXPECT_EQ(collected.CountInstances(arrayAddress), 0U);
}

}  // namespace
}  // namespace NVORHOST
