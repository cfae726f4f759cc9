#include "text/lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

std::vector<std::string_view> SplitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    ForEachLine(text, [&](std::string_view line) { lines.push_back(line); });
    return lines;
}

TEST(ForEachLine, VisitsEachLineWithoutItsLineFeed) {
    EXPECT_THAT(SplitLines("a\n\nb c\n"), ElementsAre("a", "", "b c"));
}

TEST(ForEachLine, VisitsALastLineWithoutALineFeed) {
    EXPECT_THAT(SplitLines("a\nb"), ElementsAre("a", "b"));
}

TEST(ForEachLine, KeepsCarriageReturns) {
    EXPECT_THAT(SplitLines("a\r\nb"), ElementsAre("a\r", "b"));
}

TEST(ForEachLine, VisitsNothingInAnEmptyText) {
    EXPECT_THAT(SplitLines(""), IsEmpty());
}

TEST(SplitAt, SplitsAtTheFirstSeparator) {
    EXPECT_THAT(SplitAt("a=b=c", '='), Pair("a", "b=c"));
    EXPECT_THAT(SplitAt("=b", '='), Pair("", "b"));
    EXPECT_THAT(SplitAt("a=", '='), Pair("a", ""));
}

TEST(SplitAt, ReturnsTheWholeLineWithoutASeparator) {
    EXPECT_THAT(SplitAt("abc", '='), Pair("abc", ""));
    EXPECT_THAT(SplitAt("", '='), Pair("", ""));
}

TEST(TakeUntil, TakesEmptyPartsToo) {
    std::string_view text = "a  b";
    EXPECT_EQ(TakeUntil(text, ' '), "a");
    EXPECT_EQ(TakeUntil(text, ' '), "");
    EXPECT_EQ(TakeUntil(text, ' '), "b");
    EXPECT_EQ(text, "");
    EXPECT_EQ(TakeUntil(text, ' '), "");
}

TEST(TakeWord, SkipsWhiteSpaceBeforeTheWord) {
    std::string_view text = " \teth0   00000000\n0001 ";
    EXPECT_EQ(TakeWord(text), "eth0");
    EXPECT_EQ(text, "   00000000\n0001 ");
    EXPECT_EQ(TakeWord(text), "00000000");
    EXPECT_EQ(TakeWord(text), "0001");
    EXPECT_EQ(TakeWord(text), "");
    EXPECT_EQ(text, "");
}

}  // namespace
}  // namespace NVORHOST
