#include "machine/parse/meminfo.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ParseMemInfo, ReadsEveryMember) {
    const auto info = ParseMemInfo(
        "MemTotal:       16310720 kB\n"
        "MemFree:          812344 kB\n"
        "MemAvailable:    9123456 kB\n"
        "SwapTotal:       2097148 kB\n"
        "SwapFree:        2097000 kB\n");
    EXPECT_EQ(info.totalKiB, 16310720U);
    EXPECT_EQ(info.freeKiB, 812344U);
    EXPECT_EQ(info.swapTotalKiB, 2097148U);
    EXPECT_EQ(info.swapFreeKiB, 2097000U);
}

TEST(ParseMemInfo, LeavesMissingLinesAbsent) {
    const auto info = ParseMemInfo("MemTotal: 1024 kB\n");
    EXPECT_EQ(info.totalKiB, 1024U);
    EXPECT_EQ(info.freeKiB, std::nullopt);
    EXPECT_EQ(info.swapTotalKiB, std::nullopt);
}

TEST(ParseMemInfo, KeepsExplicitZeros) {
    EXPECT_EQ(ParseMemInfo("SwapTotal: 0 kB").swapTotalKiB, 0U);
}

TEST(ParseMemInfo, SkipsLinesWithoutNumberOrWithAnotherUnit) {
    EXPECT_EQ(ParseMemInfo("MemTotal: many kB\n").totalKiB, std::nullopt);
    EXPECT_EQ(ParseMemInfo("MemTotal: 1024 MB\n").totalKiB, std::nullopt);
    EXPECT_EQ(ParseMemInfo("MemTotal: 1024\n").totalKiB, std::nullopt);
    EXPECT_EQ(ParseMemInfo("MemTotal 1024 kB\n").totalKiB, std::nullopt);
    EXPECT_EQ(ParseMemInfo("").totalKiB, std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
