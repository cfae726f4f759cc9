#include "machine/collect/firmware/memory_range.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(MakeMemoryRange, GivesBlocksInBytesAndAddressesInKibibytes) {
    const TMemoryRange range = MakeMemoryRange("System RAM", 0x100000, 0x3FFDBFFF);
    EXPECT_EQ(range.elementName, "System RAM 0x100000-0x3ffdbfff");
    EXPECT_EQ(range.blockSizeBytes, 1U);
    EXPECT_EQ(range.blocks, 1072545792U);
    EXPECT_EQ(range.startKiB, 1024U);
    EXPECT_EQ(range.endKiB, 1048431U);
    EXPECT_EQ(range.isSequential, false);
}

TEST(MakeMemoryRange, LeavesTheOtherMembersAbsent) {
    const TMemoryRange range = MakeMemoryRange("Reserved", 0, 0xFFF);
    EXPECT_EQ(range.description, std::nullopt);
    EXPECT_EQ(range.deviceId, std::nullopt);
    EXPECT_EQ(range.consumableBlocks, std::nullopt);
    EXPECT_EQ(range.isVolatile, std::nullopt);
}

TEST(MakeMemoryRange, CountsASingleByteAsOneBlock) {
    const TMemoryRange range = MakeMemoryRange("Reserved", 0x400, 0x400);
    EXPECT_EQ(range.blocks, 1U);
    EXPECT_EQ(range.startKiB, 1U);
    EXPECT_EQ(range.endKiB, 1U);
}

TEST(MakeMemoryRange, LeavesOutTheCountOfAWholeAddressSpaceWhichWouldOverflow) {
    const TMemoryRange whole = MakeMemoryRange("All", 0, UINT64_MAX);
    EXPECT_EQ(whole.elementName, "All 0x0-0xffffffffffffffff");
    EXPECT_EQ(whole.blocks, std::nullopt);
    EXPECT_EQ(whole.endKiB, 18014398509481983U);
    EXPECT_EQ(MakeMemoryRange("All but one", 1, UINT64_MAX).blocks, UINT64_MAX);
}

TEST(FormatKeyAddress, PadsToSixteenDigits) {
    EXPECT_EQ(FormatKeyAddress(0), "0x0000000000000000");
    EXPECT_EQ(FormatKeyAddress(0x100000), "0x0000000000100000");
    EXPECT_EQ(FormatKeyAddress(UINT64_MAX), "0xffffffffffffffff");
}

}  // namespace
}  // namespace NVORHOST
