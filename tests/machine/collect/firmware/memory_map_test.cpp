#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* mapRange = "KELSG_ACPI";

std::string MemMap(const std::string& number, const std::string& start, const std::string& end,
                   const std::string& type) {
    const std::string folder = "/sys/firmware/memmap/" + number;
    return folder + "/start = " + start + "\n" + folder + "/end = " + end + "\n" + folder +
           "/type = " + type + "\n";
}

TEST(MemoryMap, HasAddressesInKibibytesAndSizesInBytes) {
    TCollected collected;
    Collect(MemMap("0", "0x100000", "0x3ffdbfff", "System RAM"), collected);
    ASSERT_EQ(collected.CountInstances(mapRange), 1U);
    EXPECT_EQ(collected.Get(mapRange, "ElementName"), "System RAM 0x100000-0x3ffdbfff");
    EXPECT_EQ(collected.Get(mapRange, "Description"), "Range of the firmware's memory map, System RAM");
    EXPECT_EQ(collected.Get(mapRange, "DeviceID"), "0x0000000000100000");
    EXPECT_EQ(collected.Get(mapRange, "BlockSize"), "1");
    EXPECT_EQ(collected.Get(mapRange, "NumberOfBlocks"), "1072545792");
    EXPECT_EQ(collected.Get(mapRange, "ConsumableBlocks"), "1072545792");
    EXPECT_EQ(collected.Get(mapRange, "StartingAddress"), "1024");
    EXPECT_EQ(collected.Get(mapRange, "EndingAddress"), "1048431");
    EXPECT_EQ(collected.Get(mapRange, "SequentialAccess"), "false");
    EXPECT_EQ(collected.Get(mapRange, "Volatile"), "true");
}

TEST(MemoryMap, IsInTheOrderOfAddresses) {
    TCollected collected;
    Collect(MemMap("0", "0x0", "0xfff", "Reserved") + MemMap("2", "0x2000", "0x2fff", "System RAM") +
                MemMap("10", "0x9000", "0x9fff", "ACPI Tables"),
            collected);
    EXPECT_THAT(collected.GetAll(mapRange, "DeviceID"),
                ElementsAre("0x0000000000000000", "0x0000000000002000", "0x0000000000009000"));
}

TEST(MemoryMap, IsVolatileByTheKindOfTheRange) {
    const auto tell = [](const std::string& type) {
        TCollected collected;
        Collect(MemMap("0", "0x1000", "0x1fff", type), collected);
        return collected.Get(mapRange, "Volatile") + " " + collected.Get(mapRange, "ConsumableBlocks");
    };
    EXPECT_EQ(tell("System RAM"), "true 4096");
    EXPECT_EQ(tell("Soft Reserved"), "true absent");
    EXPECT_EQ(tell("Persistent Memory"), "false absent");
    EXPECT_EQ(tell("Persistent Memory (legacy)"), "false absent");
    EXPECT_EQ(tell("Persistent Memory (type-7)"), "false absent");
    EXPECT_EQ(tell("Persistent Memory (type-12)"), "false absent");
    EXPECT_EQ(tell("ACPI Tables"), "absent absent");
    EXPECT_EQ(tell("ACPI Non-volatile Storage"), "absent absent");
    EXPECT_EQ(tell("Unusable memory"), "absent absent");
    EXPECT_EQ(tell("Reserved"), "absent absent");
    EXPECT_EQ(tell("A type of tomorrow"), "absent absent");
}

TEST(MemoryMap, HasTheEndInTheKeyIfTwoRangesHaveOneStart) {
    TCollected collected;
    Collect(MemMap("0", "0x1000", "0x1fff", "Reserved") + MemMap("1", "0x1000", "0x2fff", "System RAM"),
            collected);
    EXPECT_THAT(collected.GetAll(mapRange, "DeviceID"), ElementsAre("0x0000000000001000@0x0000000000001fff",
                                                                    "0x0000000000001000@0x0000000000002fff"));
    EXPECT_EQ(collected.GetReport("memory-map").notes.size(), 1U);
}

TEST(MemoryMap, LeavesOutMalformedRanges) {
    TCollected collected;
    Collect(MemMap("0", "0x2000", "0x1fff", "Reserved") + MemMap("1", "2000h", "0x2fff", "Reserved") +
                "/sys/firmware/memmap/2/start = 0x3000\n/sys/firmware/memmap/2/end = 0x3fff\n" +
                MemMap("3", "0x0", "0xffffffffffffffff", "Reserved"),
            collected);
    EXPECT_THAT(collected.GetAll(mapRange, "EndingAddress"), ElementsAre("18014398509481983"));
    EXPECT_THAT(collected.GetAll(mapRange, "NumberOfBlocks"), ElementsAre("absent"));  // one more than fits
}

constexpr const char* ioMem =
    "/proc/iomem:\n"
    "| 00000000-00000fff : Reserved\n"
    "| 00001000-0009fbff : System RAM\n"
    "| 000a0000-000bffff : PCI Bus 0000:00\n"
    "| 00100000-3ffdbfff : System RAM\n"
    "|   2c600000-2d401d31 : Kernel code\n"
    "| 3ffdc000-3fffffff : RAM buffer\n";

TEST(MemoryMap, FallsBackToTheKernelsOwnMap) {
    TCollected collected;
    Collect(ioMem, collected);
    EXPECT_THAT(
        collected.GetAll(mapRange, "ElementName"),
        ElementsAre("Reserved 0x0-0xfff", "System RAM 0x1000-0x9fbff", "System RAM 0x100000-0x3ffdbfff"));
    EXPECT_THAT(collected.GetReport("memory-map").notes, IsEmpty());
}

TEST(MemoryMap, DoesNotMixItsTwoSources) {
    TCollected collected;
    Collect(MemMap("0", "0x1000", "0x1fff", "Reserved") + ioMem, collected);
    EXPECT_EQ(collected.CountInstances(mapRange), 1U);
}

TEST(MemoryMap, IsEmptyIfTheKernelHidesTheAddresses) {
    TCollected collected;
    Collect(
        "/proc/iomem:\n"
        "| 00000000-00000000 : Reserved\n"
        "| 00000000-00000000 : System RAM\n",
        collected);
    EXPECT_EQ(collected.CountInstances(mapRange), 0U);
    EXPECT_THAT(collected.GetReport("memory-map").notes,
                ElementsAre("/proc/iomem shows its addresses to root only"));
}

}  // namespace
}  // namespace NVORHOST
