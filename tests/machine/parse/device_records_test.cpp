// The small records that say what a device is: uevent, the udev database, device tree, ACPI header, lists of
// processors.
#include "machine/parse/acpi_table.h"
#include "machine/parse/cpu_list.h"
#include "machine/parse/device_tree.h"
#include "machine/parse/udev_record.h"
#include "machine/parse/uevent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(FindUeventValue, FindsTheWholeKey) {
    constexpr std::string_view text = "MAJOR=8\nDEVNAME=sda1\nPARTN=1\nPARTNAME=root & more\nEMPTY=\n";
    EXPECT_EQ(FindUeventValue(text, "PARTNAME"), "root & more");
    EXPECT_EQ(FindUeventValue(text, "PARTN"), "1");
    EXPECT_EQ(FindUeventValue(text, "PART"), std::nullopt);
    EXPECT_EQ(FindUeventValue(text, "EMPTY"), "");
    EXPECT_EQ(FindUeventValue("", "PARTN"), std::nullopt);
    EXPECT_EQ(FindUeventValue("PARTN", "PARTN"), std::nullopt);
}

TEST(FindUdevProperty, ReadsPropertyLinesOnly) {
    constexpr std::string_view text = "S:disk/by-id/x\nI:123\nID_A=no\nE:ID_A=1\nE:ID_B=a=b\nV:1\n";
    EXPECT_EQ(FindUdevProperty(text, "ID_A"), "1");
    EXPECT_EQ(FindUdevProperty(text, "ID_B"), "a=b");
    EXPECT_EQ(FindUdevProperty(text, "ID_C"), std::nullopt);
    EXPECT_EQ(FindUdevProperty("E:", "ID_C"), std::nullopt);
}

TEST(DecodeUdevEscapes, UndoesHexadecimalEscapesAndNothingElse) {
    EXPECT_EQ(DecodeUdevEscapes("EFI\\x20System"), "EFI System");
    EXPECT_EQ(DecodeUdevEscapes("a\\x2"), "a\\x2");
    EXPECT_EQ(DecodeUdevEscapes("a\\xzz\\n"), "a\\xzz\\n");
    EXPECT_EQ(DecodeUdevEscapes("\\x5cx41"), "\\x41");
}

TEST(ParseDeviceTreeStrings, SplitsAtNuls) {
    EXPECT_THAT(ParseDeviceTreeStrings(std::string_view("vendor,board\0vendor,soc\0", 24)),
                ElementsAre("vendor,board", "vendor,soc"));
    EXPECT_THAT(ParseDeviceTreeStrings("open"), ElementsAre("open"));
    EXPECT_THAT(ParseDeviceTreeStrings(std::string_view("\0\0", 2)), IsEmpty());
    EXPECT_EQ(ParseDeviceTreeString(std::string_view("Example Board\0", 14)), "Example Board");
    EXPECT_EQ(ParseDeviceTreeString(""), std::nullopt);
}

TEST(ParseAcpiTableOrigin, ReadsTheMakersNamesOfAWholeHeader) {
    const std::string header = std::string("FACP\0\0\0\0\0\0", 10) + "MAKER TABLE 01" + std::string(12, '\0');
    const auto origin = ParseAcpiTableOrigin(header);
    ASSERT_TRUE(origin);
    EXPECT_EQ(origin->oemId, "MAKER ");
    EXPECT_EQ(origin->oemTableId, "TABLE 01");
    EXPECT_FALSE(ParseAcpiTableOrigin(header.substr(0, 35)));
}

TEST(ParseCpuList, UnfoldsRanges) {
    EXPECT_THAT(ParseCpuList("0-2,5,7-8\n"), ElementsAre(0, 1, 2, 5, 7, 8));
    EXPECT_THAT(ParseCpuList("3"), ElementsAre(3));
    EXPECT_THAT(ParseCpuList(""), IsEmpty());
}

TEST(ParseCpuList, RefusesWhatIsNoList) {
    EXPECT_THAT(ParseCpuList("0-"), ElementsAre(0));
    EXPECT_THAT(ParseCpuList("2-1"), IsEmpty());
    EXPECT_THAT(ParseCpuList("a"), IsEmpty());
    EXPECT_THAT(ParseCpuList("0,,1"), IsEmpty());
    EXPECT_THAT(ParseCpuList("0-4294967295"), IsEmpty());
    EXPECT_THAT(ParseCpuList("5,4"), IsEmpty());
    EXPECT_THAT(ParseCpuList("0-3,3-5"), IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
