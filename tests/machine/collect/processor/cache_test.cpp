#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* cache = "CIM_CacheMemory";

// One cache folder of a processor.
std::string Folder(int processor, int index, const std::string& level, const std::string& type,
                   const std::string& processors, const std::string& id = "") {
    const std::string folder = "/sys/devices/system/cpu/cpu" + std::to_string(processor) + "/cache/index" +
                               std::to_string(index) + "/";
    return folder + "level = " + level + "\n" + folder + "type = " + type + "\n" + folder +
           "shared_cpu_list = " + processors + "\n" + (id.empty() ? "" : folder + "id = " + id + "\n");
}

std::string Table(const std::string& lines) {
    return "/sys/firmware/dmi/tables/DMI smbios:\n" + lines;
}

TEST(Caches, HaveEveryPropertyOfSysfs) {
    TCollected collected;
    Collect(Folder(0, 2, "2", "Unified", "0-1", "4") +
                "/sys/devices/system/cpu/cpu0/cache/index2/size = 1280K\n"
                "/sys/devices/system/cpu/cpu0/cache/index2/ways_of_associativity = 16\n"
                "/sys/devices/system/cpu/cpu0/cache/index2/coherency_line_size = 64\n",
            collected);
    ASSERT_EQ(collected.CountInstances(cache), 1U);
    EXPECT_EQ(collected.Get(cache, "ElementName"), "L2 cache 4");
    EXPECT_EQ(collected.Get(cache, "Description"), "Unified cache, 16-way, of processors 0-1");
    EXPECT_EQ(collected.Get(cache, "DeviceID"), "L2 cache 4");
    EXPECT_EQ(collected.Get(cache, "BlockSize"), "1");
    EXPECT_EQ(collected.Get(cache, "NumberOfBlocks"), "1310720");
    EXPECT_EQ(collected.Get(cache, "Associativity"), "8");
    EXPECT_EQ(collected.Get(cache, "CacheType"), "5");
    EXPECT_EQ(collected.Get(cache, "Level"), "4");
    EXPECT_EQ(collected.Get(cache, "LineSize"), "64");
    EXPECT_EQ(collected.Get(cache, "WritePolicy"), "absent");
}

TEST(Caches, AreListedOnceIfProcessorsShareThem) {
    TCollected collected;
    Collect(Folder(0, 0, "1", "Data", "0", "0") + Folder(0, 1, "1", "Instruction", "0", "0") +
                Folder(0, 3, "3", "Unified", "0-1", "0") + Folder(1, 0, "1", "Data", "1", "1") +
                Folder(1, 1, "1", "Instruction", "1", "1") + Folder(1, 3, "3", "Unified", "0-1", "0"),
            collected);
    EXPECT_THAT(collected.GetAll(cache, "DeviceID"),
                ElementsAre("L1 data cache 0", "L1 instruction cache 0", "L3 cache 0", "L1 data cache 1",
                            "L1 instruction cache 1"));
    EXPECT_THAT(collected.GetAll(cache, "Level"), ElementsAre("3", "3", "5", "3", "3"));
    EXPECT_THAT(collected.GetAll(cache, "CacheType"), ElementsAre("4", "3", "5", "4", "3"));
}

TEST(Caches, HaveTheLowestProcessorInTheKeyOnKernelsWithoutNumbers) {
    TCollected collected;
    Collect(Folder(2, 0, "2", "Unified", "2-3") + Folder(3, 0, "2", "Unified", "2-3") +
                Folder(10, 0, "4", "Unified", "10"),
            collected);
    EXPECT_THAT(collected.GetAll(cache, "DeviceID"), ElementsAre("L2 cache 2", "L4 cache 10"));
    EXPECT_THAT(collected.GetAll(cache, "Description"),
                ElementsAre("Unified cache, of processors 2-3", "Unified cache, of processor 10"));
    EXPECT_THAT(collected.GetAll(cache, "Level"), ElementsAre("4", "1"));
    EXPECT_THAT(collected.GetAll(cache, "Associativity"), ElementsAre("absent", "absent"));
}

TEST(Caches, HaveOtherAsAssociativityForNumbersOfWaysWithoutACode) {
    TCollected collected;
    Collect(Folder(0, 0, "1", "Data", "0", "0") +
                "/sys/devices/system/cpu/cpu0/cache/index0/ways_of_associativity = 12\n" +
                Folder(1, 0, "1", "Data", "1", "1") +
                "/sys/devices/system/cpu/cpu1/cache/index0/ways_of_associativity = 0\n",
            collected);
    EXPECT_THAT(collected.GetAll(cache, "Associativity"), ElementsAre("1", "absent"));
    EXPECT_THAT(collected.GetAll(cache, "Description"),
                ElementsAre("Data cache, 12-way, of processor 0", "Data cache, of processor 1"));
}

TEST(Caches, FallBackToTheTableOfTheFirmware) {
    TCollected collected;
    Collect(Table("| 7: 01 80 00 20 00 20 00 02 00 02 00 00 05 04 07 \"L1-Cache\"\n"
                  "| 7: 01 81 01 00 02 00 01 02 00 02 00 00 05 05 09 \"L2-Cache\"\n"
                  "| 7: 01 82 03 00 00 00 00 02 00 02 00 00 05 05 02 \"L3-Cache\"\n"),
            collected);
    EXPECT_THAT(collected.GetAll(cache, "DeviceID"), ElementsAre("L1-Cache", "L2-Cache"));
    EXPECT_THAT(collected.GetAll(cache, "ElementName"), ElementsAre("L1-Cache", "L2-Cache"));
    EXPECT_THAT(collected.GetAll(cache, "Description"), ElementsAre("Level 1 cache", "Level 2 cache"));
    EXPECT_THAT(collected.GetAll(cache, "NumberOfBlocks"), ElementsAre("32768", "262144"));
    EXPECT_THAT(collected.GetAll(cache, "Level"), ElementsAre("3", "4"));
    EXPECT_THAT(collected.GetAll(cache, "CacheType"), ElementsAre("4", "5"));
    EXPECT_THAT(collected.GetAll(cache, "Associativity"), ElementsAre("7", "1"));
    EXPECT_THAT(collected.GetAll(cache, "WritePolicy"), ElementsAre("4", "3"));
}

TEST(Caches, OfTheFirmwareHaveTheirPlacesInTheKeyIfTheyShareADesignation) {
    TCollected collected;
    Collect(Table("| 7: 01 80 00 20 00 20 00 02 00 02 00 00 05 04 07 \"L1\"\n"
                  "| 7: 01 80 00 20 00 20 00 02 00 02 00 00 05 03 07 \"L1\"\n"),
            collected);
    EXPECT_THAT(collected.GetAll(cache, "DeviceID"), ElementsAre("L1@cache 1", "L1@cache 2"));
}

}  // namespace
}  // namespace NVORHOST
