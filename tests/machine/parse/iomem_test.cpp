#include "machine/parse/iomem.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ParseIoMem, ReturnsOutermostRangesOnly) {
    const auto ranges = ParseIoMem(
        "00000000-00000fff : Reserved\n"
        "00100000-3ffdbfff : System RAM\n"
        "  2c600000-2d401d31 : Kernel code\n"
        "    2c600000-2c600fff : deeper\n"
        "100000000-11fffffff : System RAM\n");
    ASSERT_EQ(ranges.size(), 3U);
    EXPECT_EQ(ranges[0].first, 0U);
    EXPECT_EQ(ranges[0].last, 0xFFFU);
    EXPECT_EQ(ranges[0].name, "Reserved");
    EXPECT_EQ(ranges[1].name, "System RAM");
    EXPECT_EQ(ranges[2].first, 0x100000000U);
    EXPECT_EQ(ranges[2].last, 0x11FFFFFFFU);
}

TEST(ParseIoMem, KeepsColonsInNames) {
    EXPECT_EQ(ParseIoMem("a0000-bffff : PCI Bus 0000:00\n").at(0).name, "PCI Bus 0000:00");
}

TEST(ParseIoMem, ReadsHiddenAddressesAsZeros) {
    const auto ranges = ParseIoMem("00000000-00000000 : System RAM\n");
    ASSERT_EQ(ranges.size(), 1U);
    EXPECT_EQ(ranges[0].last, 0U);
}

TEST(ParseIoMem, SkipsMalformedLines) {
    EXPECT_TRUE(ParseIoMem("").empty());
    EXPECT_TRUE(ParseIoMem("\n").empty());
    EXPECT_TRUE(ParseIoMem("System RAM\n").empty());
    EXPECT_TRUE(ParseIoMem("100- : a\n").empty());
    EXPECT_TRUE(ParseIoMem("-100 : a\n").empty());
    EXPECT_TRUE(ParseIoMem("100-200x : a\n").empty());
    EXPECT_TRUE(ParseIoMem("200-100 : a\n").empty());
    EXPECT_TRUE(ParseIoMem("10000000000000000-20000000000000000 : a\n").empty());
}

// A truncated text loses its last range or a part of the name, and gains no range.
TEST(ParseIoMem, ReturnsNoExtraRangesForATruncatedText) {
    const std::string text = "00001000-0009fbff : System RAM\n00100000-3ffdbfff : System RAM\n";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        const auto ranges = ParseIoMem(text.substr(0, length));
        EXPECT_LE(ranges.size(), 2U);
        if (!ranges.empty() && length > 31) {
            EXPECT_EQ(ranges[0].last, 0x9FBFFU) << length;
        }
    }
}

}  // namespace
}  // namespace NVORHOST
