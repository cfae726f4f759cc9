#include "inventory/write/text_table.h"

#include <gtest/gtest.h>

#include <sstream>

namespace NINVENTORY {
namespace {

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
