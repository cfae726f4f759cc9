#include "machine/system/path_pattern.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(MatchesPathPattern, MatchesLiterallyWithoutStars) {
    EXPECT_TRUE(MatchesPathPattern("/proc/stat", "/proc/stat"));
    EXPECT_FALSE(MatchesPathPattern("/proc/stat", "/proc/stats"));
    EXPECT_FALSE(MatchesPathPattern("/proc/stat", "/proc"));
    EXPECT_FALSE(MatchesPathPattern("/proc", "/proc/stat"));
}

TEST(MatchesPathPattern, MatchesAnyPartOfANameWithAStar) {
    EXPECT_TRUE(MatchesPathPattern("/proc/*/stat", "/proc/17/stat"));
    EXPECT_FALSE(MatchesPathPattern("/proc/*/stat", "/proc/17/task/stat"));
    EXPECT_TRUE(MatchesPathPattern("/sys/cpu*", "/sys/cpu12"));
    EXPECT_TRUE(MatchesPathPattern("/sys/cpu*", "/sys/cpu"));
    EXPECT_FALSE(MatchesPathPattern("/sys/cpu*", "/sys/mycpu"));
    EXPECT_TRUE(MatchesPathPattern("/a/*_serial", "/a/board_serial"));
    EXPECT_TRUE(MatchesPathPattern("/a/b*c*d", "/a/bxcxcxd"));
    EXPECT_FALSE(MatchesPathPattern("/a/b*c*d", "/a/bxd"));
}

TEST(MatchesPathPattern, MatchesAnyNumberOfNamesWithTwoStars) {
    EXPECT_TRUE(MatchesPathPattern("/sys/**/serial", "/sys/a/b/serial"));
    EXPECT_TRUE(MatchesPathPattern("/sys/**/serial", "/sys/serial"));
    EXPECT_FALSE(MatchesPathPattern("/sys/**/serial", "/sys/a/serials"));
    EXPECT_TRUE(MatchesPathPattern("/sys/**", "/sys/a/b"));
    EXPECT_TRUE(MatchesPathPattern("/**", "/a"));
    EXPECT_TRUE(MatchesPathPattern("/a/**/b/**/c", "/a/x/b/y/b/z/c"));
    EXPECT_FALSE(MatchesPathPattern("/a/**/b", "/c/b"));
}

}  // namespace
}  // namespace NVORHOST
