#include "text/numbers.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ParseNumber, AcceptsWholeTokensOnly) {
    EXPECT_EQ(ParseNumber<std::uint32_t>("42"), 42U);
    EXPECT_EQ(ParseNumber<std::uint32_t>(" 42\n"), 42U);
    EXPECT_EQ(ParseNumber<std::uint32_t>("42 kB"), std::nullopt);
    EXPECT_EQ(ParseNumber<std::uint32_t>("4 2"), std::nullopt);
    EXPECT_EQ(ParseNumber<std::uint32_t>("0x2A"), std::nullopt);
    EXPECT_EQ(ParseNumber<std::uint32_t>("+42"), std::nullopt);
    EXPECT_EQ(ParseNumber<std::uint32_t>("4.2"), std::nullopt);
    EXPECT_EQ(ParseNumber<std::uint32_t>(""), std::nullopt);
    EXPECT_EQ(ParseNumber<std::uint32_t>(" \n"), std::nullopt);
}

TEST(ParseNumber, RejectsNumbersOutOfRange) {
    EXPECT_EQ(ParseNumber<std::uint8_t>("255"), 255);
    EXPECT_EQ(ParseNumber<std::uint8_t>("256"), std::nullopt);
    EXPECT_EQ(ParseNumber<std::uint32_t>("-1"), std::nullopt);
    EXPECT_EQ(ParseNumber<std::int32_t>("-1"), -1);
    EXPECT_EQ(ParseNumber<std::uint64_t>("18446744073709551615"), 18446744073709551615U);
    EXPECT_EQ(ParseNumber<std::uint64_t>("18446744073709551616"), std::nullopt);
}

TEST(ParseHexNumber, AcceptsDigitsWithAndWithoutAPrefix) {
    EXPECT_EQ(ParseHexNumber<std::uint16_t>("0x8086\n"), 0x8086);
    EXPECT_EQ(ParseHexNumber<std::uint16_t>("1aF4"), 0x1AF4);
    EXPECT_EQ(ParseHexNumber<std::uint16_t>("0x10000"), std::nullopt);
    EXPECT_EQ(ParseHexNumber<std::uint16_t>("0x"), std::nullopt);
    EXPECT_EQ(ParseHexNumber<std::uint16_t>("0xZZ"), std::nullopt);
}

TEST(ParseRounded, RoundsAtTheFirstDecimal) {
    EXPECT_EQ(ParseRounded("2299.992"), 2300U);
    EXPECT_EQ(ParseRounded("2299.499"), 2299U);
    EXPECT_EQ(ParseRounded("2299"), 2299U);
    EXPECT_EQ(ParseRounded("0.5"), 1U);
    EXPECT_EQ(ParseRounded("2299."), std::nullopt);
    EXPECT_EQ(ParseRounded("2299.x"), std::nullopt);
    EXPECT_EQ(ParseRounded(".5"), std::nullopt);
    EXPECT_EQ(ParseRounded("4294967295.9"), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
