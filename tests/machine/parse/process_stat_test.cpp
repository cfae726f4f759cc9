#include "machine/parse/process_stat.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

constexpr char cron[] =
    "412 (cron) S 1 412 412 0 -1 4194560 1029 2054 3 4 5 6 7 8 20 0 1 0 250 9879552 700 18446744073709551615 "
    "1 "
    "1 0 0 0 0 0 0 65537 0 0 0 17 1 0 0 0 0 0\n";

TEST(ParseProcessStat, ReadsNameStatePriorityAndStart) {
    const auto stat = ParseProcessStat(cron);
    ASSERT_TRUE(stat);
    EXPECT_EQ(stat->name, "cron");
    EXPECT_EQ(stat->state, 'S');
    EXPECT_FALSE(stat->isKernelThread);
    EXPECT_EQ(stat->priority, 20);
    EXPECT_EQ(stat->startTicks, 250U);
}

TEST(ParseProcessStat, AcceptsBlanksAndParenthesesInNames) {
    for (const std::string name :
         {"tmux: server", "(sd-pam)", "a) R 1 (b", ") S 1 1 1 0", "((", "", " ", "x\ny", "))"}) {
        std::string text = cron;
        text.replace(text.find("cron"), 4, name);
        const auto stat = ParseProcessStat(text);
        ASSERT_TRUE(stat) << name;
        EXPECT_EQ(stat->name, name);
        EXPECT_EQ(stat->state, 'S') << name;
        EXPECT_EQ(stat->startTicks, 250U) << name;
    }
}

TEST(ParseProcessStat, RecognisesKernelThreads) {
    const auto stat = ParseProcessStat("2 (kthreadd) S 0 0 0 0 -1 2129984 0 0 0 0 0 0 0 0 20 0 1 0 7 0 0\n");
    ASSERT_TRUE(stat);
    EXPECT_TRUE(stat->isKernelThread);
}

TEST(ParseProcessStat, ReadsRealTimePriorities) {
    const auto stat =
        ParseProcessStat("9 (migration/0) S 0 0 0 0 -1 69238848 0 0 0 0 0 0 0 0 -100 0 1 0 7 0 0");
    ASSERT_TRUE(stat);
    EXPECT_EQ(stat->priority, -100);
}

TEST(ParseProcessStat, ReturnsNulloptForATruncatedLine) {
    const std::string text = "412 (cron) S 1 412 412 0 -1 4194560 1029 2054 3 4 5 6 7 8 20 0 1 0 250";
    for (std::size_t length = 0; length + 3 < text.size(); ++length) {
        EXPECT_FALSE(ParseProcessStat(text.substr(0, length))) << length;
    }
    EXPECT_TRUE(ParseProcessStat(text));
}

TEST(ParseProcessStat, ReturnsNulloptForMalformedNumbers) {
    EXPECT_FALSE(ParseProcessStat("1 (a) S 1 1 1 0 -1 flags 0 0 0 0 0 0 0 0 20 0 1 0 250 0"));
    EXPECT_FALSE(ParseProcessStat("1 (a) S 1 1 1 0 -1 0 0 0 0 0 0 0 0 0 high 0 1 0 250 0"));
    EXPECT_FALSE(ParseProcessStat("1 (a) S 1 1 1 0 -1 0 0 0 0 0 0 0 0 0 20 0 1 0 -250 0"));
    EXPECT_FALSE(ParseProcessStat("1 (a) SS 1 1 1 0 -1 0 0 0 0 0 0 0 0 0 20 0 1 0 250 0"));
    EXPECT_FALSE(ParseProcessStat("1 )a( S 1 1 1 0 -1 0 0 0 0 0 0 0 0 0 20 0 1 0 250 0"));
}

}  // namespace
}  // namespace NVORHOST
