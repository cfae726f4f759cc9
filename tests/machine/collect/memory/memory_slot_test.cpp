#include "machine/collect/memory/memory_kind.h"
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* slot = "CIM_PhysicalConnector";
constexpr const char* content = "CIM_ElementInConnector";
constexpr const char* capacity = "CIM_MemoryCapacity";

std::string Table(const std::string& lines) {
    return "/sys/firmware/dmi/tables/DMI smbios:\n" + lines;
}

// A memory device of version 2.1 with the word of its size and the code of its form as digits.
std::string Device(const std::string& locator, const std::string& bank, const std::string& size,
                   const std::string& form = "09") {
    return "| 17: 00 00 fe ff 48 00 40 00 " + size + " " + form + " 00 01 02 1a 80 20 \"" + locator +
           "\" \"" + bank + "\"\n";
}

constexpr const char* empty = "00 00";
constexpr const char* gibibyte = "00 04";

TEST(MemorySlots, HaveEveryPropertyOfTheTable) {
    TCollected collected;
    Collect(Table(Device("CPU1_DIMM_A1", "NODE 0 CHANNEL A", gibibyte)), collected);
    ASSERT_EQ(collected.CountInstances(slot), 1U);
    EXPECT_EQ(collected.Get(slot, "ElementName"), "CPU1_DIMM_A1");
    EXPECT_EQ(collected.Get(slot, "Description"), "Memory slot, DIMM");
    EXPECT_EQ(collected.Get(slot, "Tag"), "CPU1_DIMM_A1");
    EXPECT_EQ(collected.Get(slot, "ConnectorGender"), "3");
    EXPECT_EQ(collected.Get(slot, "ConnectorLayout"), "7");
    EXPECT_EQ(collected.Get(slot, "BankLabel"), "NODE 0 CHANNEL A");
}

TEST(MemorySlots, AreListedWithoutAModuleToo) {
    TCollected collected;
    Collect(
        Table(Device("A1", "Bank 0", gibibyte) + Device("A2", "Bank 1", empty, "02") + Device("", "", empty)),
        collected);
    EXPECT_THAT(collected.GetAll(slot, "ElementName"), ElementsAre("A1", "A2", "memory device 3"));
    EXPECT_THAT(collected.GetAll(slot, "Description"),
                ElementsAre("Memory slot, DIMM", "Empty memory slot", "Empty memory slot, DIMM"));
    EXPECT_THAT(collected.GetAll(slot, "BankLabel"), ElementsAre("Bank 0", "Bank 1", "absent"));
}

TEST(MemorySlots, ReferToTheirModules) {
    TCollected collected;
    Collect(Table(Device("DIMM 0", "Channel A", gibibyte) + Device("DIMM 0", "Channel B", empty) +
                  Device("DIMM 0", "Channel C", gibibyte)),
            collected);
    EXPECT_THAT(collected.GetAll(content, "Antecedent"),
                ElementsAre("CIM_PhysicalConnector.Tag=\"DIMM 0@Channel A\"",
                            "CIM_PhysicalConnector.Tag=\"DIMM 0@Channel C\""));
    EXPECT_THAT(
        collected.GetAll(content, "Dependent"),
        ElementsAre("KELSG_SPDData.Tag=\"DIMM 0@Channel A\"", "KELSG_SPDData.Tag=\"DIMM 0@Channel C\""));
    EXPECT_THAT(collected.GetAll("KELSG_SPDData", "Tag"),
                ElementsAre("DIMM 0@Channel A", "DIMM 0@Channel C"));
}

TEST(MemorySlots, LeaveOutSolderedChips) {
    TCollected collected;
    Collect(Table(Device("Onboard", "Channel A", gibibyte, "0b") +
                  Device("Onboard", "Channel B", gibibyte, "0d")),
            collected);
    EXPECT_THAT(collected.GetAll(slot, "Tag"), ElementsAre("Onboard@Channel B"));
    EXPECT_THAT(collected.GetAll(content, "Dependent"),
                ElementsAre("KELSG_SPDData.Tag=\"Onboard@Channel B\""));
}

TEST(MemorySlots, HaveWhatTheirArrayCanHold) {
    TCollected collected;
    Collect(Table("| 16: 03 03 06 00 00 00 02 fe ff 04 00\n"
                  "| 16: 03 04 02 00 00 00 80 fe ff 01 00 00 00 00 00 00 02 00 00\n"
                  "| 16: 03 02 03 00 00 00 80 fe ff 00 00\n"),
            collected);
    EXPECT_THAT(collected.GetAll(capacity, "Name"),
                ElementsAre("memory array 1", "memory array 2", "memory array 3"));
    EXPECT_THAT(collected.GetAll(capacity, "ElementName"),
                ElementsAre("memory array 1", "memory array 2", "memory array 3"));
    EXPECT_THAT(collected.GetAll(capacity, "Description"),
                ElementsAre("System memory, 4 devices, error correction: Multi-bit ECC",
                            "Video memory, 1 device", "Memory, error correction: None"));
    EXPECT_THAT(collected.GetAll(capacity, "MaximumMemoryCapacity"),
                ElementsAre("33554432", "2147483648", "absent"));
}

TEST(MemorySlots, HaveNoInstanceWithoutATable) {
    TCollected collected;
    Collect("/proc/meminfo:\n| MemTotal: 1024 kB\n", collected);
    for (const char* name : {slot, content, capacity}) {
        EXPECT_EQ(collected.CountInstances(name), 0U) << name;
    }
}

TEST(FindErrorCorrection, ReturnsNulloptForOtherAndUnknownCodes) {
    EXPECT_EQ(FindErrorCorrection(0x01), std::nullopt);
    EXPECT_EQ(FindErrorCorrection(0x02), std::nullopt);
    EXPECT_EQ(FindErrorCorrection(0x03), "None");
    EXPECT_EQ(FindErrorCorrection(0x04), "Parity");
    EXPECT_EQ(FindErrorCorrection(0x05), "Single-bit ECC");
    EXPECT_EQ(FindErrorCorrection(0x06), "Multi-bit ECC");
    EXPECT_EQ(FindErrorCorrection(0x07), "CRC");
    EXPECT_EQ(FindErrorCorrection(0x08), std::nullopt);
}

TEST(FindMemoryArrayUse, ReturnsNulloptForOtherAndUnknownCodes) {
    EXPECT_EQ(FindMemoryArrayUse(0x01), std::nullopt);
    EXPECT_EQ(FindMemoryArrayUse(0x02), std::nullopt);
    EXPECT_EQ(FindMemoryArrayUse(0x03), "System memory");
    EXPECT_EQ(FindMemoryArrayUse(0x04), "Video memory");
    EXPECT_EQ(FindMemoryArrayUse(0x05), "Flash memory");
    EXPECT_EQ(FindMemoryArrayUse(0x06), "Non-volatile RAM");
    EXPECT_EQ(FindMemoryArrayUse(0x07), "Cache memory");
    EXPECT_EQ(FindMemoryArrayUse(0x08), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
