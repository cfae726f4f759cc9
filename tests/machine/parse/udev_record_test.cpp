#include "machine/parse/udev_record.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr std::string_view record = "S:disk/by-id/x\nI:123\nID_A=no\nE:ID_A=1\nE:ID_B=a=b\nE:ID_A=2\nV:1\n";

TEST(FindUdevProperty, ReturnsTheFirstPropertyOfThatName) {
    EXPECT_EQ(FindUdevProperty(record, "ID_A"), "1");
}

TEST(FindUdevProperty, SplitsALineAtTheFirstEqualsSign) {
    EXPECT_EQ(FindUdevProperty(record, "ID_B"), "a=b");
}

TEST(FindUdevProperty, ReturnsNulloptWithoutSuchAProperty) {
    EXPECT_EQ(FindUdevProperty(record, "ID_C"), std::nullopt);
    EXPECT_EQ(FindUdevProperty(record, "ID"), std::nullopt);
    EXPECT_EQ(FindUdevProperty("E:", "ID_C"), std::nullopt);
    EXPECT_EQ(FindUdevProperty("", "ID_C"), std::nullopt);
}

TEST(FindUdevProperty, IgnoresLinesOfOtherKinds) {
    EXPECT_EQ(FindUdevProperty("ID_A=no\nS:ID_A=no\n", "ID_A"), std::nullopt);
}

TEST(DecodeUdevEscapes, DecodesTwoHexadecimalDigits) {
    EXPECT_EQ(DecodeUdevEscapes("EFI\\x20System"), "EFI System");
    EXPECT_EQ(DecodeUdevEscapes("\\xc3\\xA9"), "\xC3\xA9");
}

TEST(DecodeUdevEscapes, DecodesOnce) {
    EXPECT_EQ(DecodeUdevEscapes("\\x5cx41"), "\\x41");
}

TEST(DecodeUdevEscapes, KeepsMalformedEscapes) {
    EXPECT_EQ(DecodeUdevEscapes("a\\x2"), "a\\x2");
    EXPECT_EQ(DecodeUdevEscapes("a\\xzz\\n"), "a\\xzz\\n");
    EXPECT_EQ(DecodeUdevEscapes("\\x 1"), "\\x 1");
    EXPECT_EQ(DecodeUdevEscapes(""), "");
}

}  // namespace
}  // namespace NVORHOST
