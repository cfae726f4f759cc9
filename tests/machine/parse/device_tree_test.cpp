#include "machine/parse/device_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(ParseDeviceTreeStrings, SplitsAtNuls) {
    EXPECT_THAT(ParseDeviceTreeStrings(std::string_view("vendor,board\0vendor,soc\0", 24)),
                ElementsAre("vendor,board", "vendor,soc"));
}

TEST(ParseDeviceTreeStrings, AcceptsALastTextWithoutANul) {
    EXPECT_THAT(ParseDeviceTreeStrings("open"), ElementsAre("open"));
    EXPECT_THAT(ParseDeviceTreeStrings(std::string_view("a\0b", 3)), ElementsAre("a", "b"));
}

TEST(ParseDeviceTreeStrings, LeavesOutEmptyTexts) {
    EXPECT_THAT(ParseDeviceTreeStrings(std::string_view("\0a\0\0b\0", 6)), ElementsAre("a", "b"));
    EXPECT_THAT(ParseDeviceTreeStrings(std::string_view("\0\0", 2)), IsEmpty());
    EXPECT_THAT(ParseDeviceTreeStrings(""), IsEmpty());
}

TEST(ParseDeviceTreeString, ReturnsTheFirstText) {
    EXPECT_EQ(ParseDeviceTreeString(std::string_view("Example Board\0", 14)), "Example Board");
    EXPECT_EQ(ParseDeviceTreeString(std::string_view("a\0b\0", 4)), "a");
}

TEST(ParseDeviceTreeString, ReturnsNulloptWithoutAText) {
    EXPECT_EQ(ParseDeviceTreeString(""), std::nullopt);
    EXPECT_EQ(ParseDeviceTreeString(std::string_view("\0", 1)), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
