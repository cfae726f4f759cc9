#include "machine/parse/proc_stat.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ParseBootTime, ReadsTheBtimeLine) {
    EXPECT_EQ(ParseBootTime("cpu  1 2 3\nctxt 99\nbtime 1700000000\nprocesses 7\n"), 1700000000);
}

TEST(ParseBootTime, ReturnsNulloptWithoutAValidLine) {
    EXPECT_EQ(ParseBootTime(""), std::nullopt);
    EXPECT_EQ(ParseBootTime("cpu 1 2 3\n"), std::nullopt);
    EXPECT_EQ(ParseBootTime("btime\n"), std::nullopt);
    EXPECT_EQ(ParseBootTime("btime soon\n"), std::nullopt);
    EXPECT_EQ(ParseBootTime("btime 0\n"), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
