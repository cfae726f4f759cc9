#include "text/hex.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ToHexDigits, PadsToTheNumberOfDigits) {
    EXPECT_EQ(ToHexDigits(0x1F, 4), "001f");
    EXPECT_EQ(ToHexDigits(0, 2), "00");
    EXPECT_EQ(ToHexDigits(0xFFFFFFFFFFFFFFFF, 16), "ffffffffffffffff");
}

TEST(ToHexDigits, KeepsTheLowestDigits) {
    EXPECT_EQ(ToHexDigits(0x12345, 4), "2345");
    EXPECT_EQ(ToHexDigits(0x12345, 0), "");
}

TEST(ToHexDigits, WritesUpperCaseOnRequest) {
    EXPECT_EQ(ToHexDigits(0xBEEF, 4, EHexCase::upper), "BEEF");
}

TEST(FormatHex, PadsToTheMinimumAndGrowsBeyond) {
    EXPECT_EQ(FormatHex(0), "0x0");
    EXPECT_EQ(FormatHex(0x1F), "0x1f");
    EXPECT_EQ(FormatHex(0x1F, 4), "0x001f");
    EXPECT_EQ(FormatHex(0x12345, 4), "0x12345");
    EXPECT_EQ(FormatHex(0xFFFFFFFFFFFFFFFF), "0xffffffffffffffff");
    EXPECT_EQ(FormatHex(0x8000000000000000, 16), "0x8000000000000000");
}

TEST(ToHex, WritesTwoDigitsForEachByte) {
    EXPECT_EQ(ToHex(std::string_view("\x00\x7F\xFF\x0A", 4)), "007fff0a");
    EXPECT_EQ(ToHex(std::string_view("\x00\x7F\xFF\x0A", 4), EHexCase::upper), "007FFF0A");
    EXPECT_EQ(ToHex(""), "");
}

TEST(ParseHex, ReadsDigitsOfEitherCase) {
    EXPECT_EQ(ParseHex("007fFf0A"), std::string("\x00\x7F\xFF\x0A", 4));
    EXPECT_EQ(ParseHex(""), "");
}

TEST(ParseHex, RejectsOddLengthsAndOtherCharacters) {
    EXPECT_EQ(ParseHex("0"), std::nullopt);
    EXPECT_EQ(ParseHex("012"), std::nullopt);
    EXPECT_EQ(ParseHex("0g"), std::nullopt);
    EXPECT_EQ(ParseHex(" 1"), std::nullopt);
    EXPECT_EQ(ParseHex("0x"), std::nullopt);
}

TEST(ParseHex, RestoresEveryByte) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    EXPECT_EQ(ParseHex(ToHex(bytes)), bytes);
    EXPECT_EQ(ParseHex(ToHex(bytes, EHexCase::upper)), bytes);
}

TEST(IsHex, AcceptsDigitsOfEitherCaseOnly) {
    EXPECT_TRUE(IsHex("0123456789abcdefABCDEF"));
    EXPECT_TRUE(IsHex(""));
    EXPECT_FALSE(IsHex("0x1"));
    EXPECT_FALSE(IsHex("1 "));
}

}  // namespace
}  // namespace NVORHOST
