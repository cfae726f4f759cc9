#include "text/trim.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(TrimBlanks, RemovesAsciiWhiteSpaceAtBothEnds) {
    EXPECT_EQ(TrimBlanks(" \t\r\n\v\fa b\f\v\n\r\t "), "a b");
    EXPECT_EQ(TrimBlanks("a"), "a");
}

TEST(TrimBlanks, ReturnsAnEmptyTextForBlanks) {
    EXPECT_EQ(TrimBlanks(" \t\n"), "");
    EXPECT_EQ(TrimBlanks(""), "");
}

TEST(TrimBlanks, KeepsNuls) {
    EXPECT_EQ(TrimBlanks(std::string_view(" a\0 ", 4)), std::string_view("a\0", 2));
}

TEST(Trim, RemovesTheGivenCharactersOnly) {
    EXPECT_EQ(Trim("--a-b-", "-"), "a-b");
    EXPECT_EQ(Trim(" -a- ", "-"), " -a- ");
    EXPECT_EQ(Trim("----", "-"), "");
    EXPECT_EQ(Trim("a", ""), "a");
}

}  // namespace
}  // namespace NVORHOST
