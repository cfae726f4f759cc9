#include "inventory/write/text_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace NINVENTORY {
namespace {

using testing::ElementsAre;

std::string Write(const TTextTable& table) {
    std::ostringstream out;
    table.Write(out);
    return out.str();
}

TEST(TextTable, AlignsColumns) {
    TTextTable table({"name", "size"}, {});
    table.AddRow({"sda", "1 TB"});
    table.AddRow({"nvme0n1", "480 GB"});
    EXPECT_EQ(Write(table),
              "name     size\n"
              "sda      1 TB\n"
              "nvme0n1  480 GB\n");
}

TEST(TextTable, AlignsWideAndCombiningCharacters) {
    TTextTable table({"name", "size"}, {});
    table.AddRow({"硬盘", "1"});
    table.AddRow({"e\u0301", "2"});
    EXPECT_EQ(Write(table),
              "name  size\n"
              "硬盘  1\n"
              "e\u0301     2\n");
}

TEST(TextTable, LeavesOutColumnsWithoutText) {
    TTextTable table({"name", "serial", "size"}, {});
    table.AddRow({"a", "", "1"});
    EXPECT_EQ(Write(table), "name  size\na     1\n");
}

TEST(TextTable, ContinuesColumnsThatDoNotFitBelowTheirRow) {
    TTextTable table({"name", "size", "serial number"}, {.width = 20});
    table.AddRow({"first disk", "1 TB", "0123456789"});
    table.AddRow({"second", "2 TB", ""});
    EXPECT_EQ(Write(table),
              "name        size\n"
              "    serial number\n"
              "first disk  1 TB\n"
              "    0123456789\n"
              "second      2 TB\n");
}

TEST(TextTable, LeavesOutMinorColumnsThatDoNotFit) {
    TTextTable table({"name", {"firmware", true, ""}, "size", {"place", true, ""}}, {.width = 21});
    table.AddRow({"disk", "1.0", "1 TB", "bay 2"});
    EXPECT_EQ(Write(table),
              "name  firmware  size\n"
              "disk  1.0       1 TB\n");
}

TEST(TextTable, LeavesOutAnIdentityOnlyBesideASerialNumber) {
    const std::vector<TTextColumn> columns{"name", "serial number", {"identity", false, "serial number"}};
    TTextTable known(columns, {.width = 25});
    known.AddRow({"disk", "S1", "naa.5000c5001234abcd"});
    EXPECT_EQ(Write(known), "name  serial number\ndisk  S1\n");
    TTextTable unknown(columns, {.width = 25});
    unknown.AddRow({"disk", "", "naa.5000c5001234abcd"});
    EXPECT_EQ(Write(unknown), "name\n    identity\ndisk\n    naa.5000c5001234abcd\n");
}

TEST(TextTable, WrapsTheWidestColumnBetweenWords) {
    TTextTable table({"address", "name", "speed"}, {.width = 44});
    table.AddRow({"00:1f.2", "Example SATA controller with six ports and RAID", "6 Gbit/s"});
    table.AddRow({"00:1f.3", "", ""});
    EXPECT_EQ(Write(table),
              "address  name                       speed\n"
              "00:1f.2  Example SATA controller    6 Gbit/s\n"
              "         with six ports and RAID\n"
              "00:1f.3\n");
}

TEST(WrapText, EndsLinesAtBlanksAndDividesLongWords) {
    EXPECT_THAT(WrapText("one two three", 7), ElementsAre("one two", "three"));
    EXPECT_THAT(WrapText("0123456789 x", 4), ElementsAre("0123", "4567", "89 x"));
    EXPECT_THAT(WrapText("硬盘硬盘", 5), ElementsAre("硬盘", "硬盘"));
    EXPECT_THAT(WrapText("硬", 1), ElementsAre("硬"));
    EXPECT_THAT(WrapText("", 5), ElementsAre(""));
}

TEST(TextTable, ShowsACellWiderThanTheTerminalWhole) {
    TTextTable table({"a", "b"}, {.width = 10});
    table.AddRow({"0123456789ABCDEF", "x"});
    EXPECT_EQ(Write(table), "a\n    b\n0123456789ABCDEF\n    x\n");
}

TEST(TextTable, WritesTitlesInBoldWithColour) {
    TTextTable table({"a"}, {.hasColour = true});
    table.AddRow({"1"});
    EXPECT_EQ(Write(table), "\x1B[1ma\n\x1B[0m1\n");
}

TEST(CountColumns, IgnoresControlsAndMalformedBytes) {
    EXPECT_EQ(CountColumns("ab"), 2U);
    EXPECT_EQ(CountColumns("硬"), 2U);
    EXPECT_EQ(CountColumns("a\x1B\xFF"), 1U);
}

}  // namespace
}  // namespace NINVENTORY
