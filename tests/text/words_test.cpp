#include "text/words.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(WordLength, CountsLettersAndDigitsAtTheStart) {
    EXPECT_EQ(WordLength("ab1-c"), 3U);
    EXPECT_EQ(WordLength("ab1"), 3U);
    EXPECT_EQ(WordLength("0"), 1U);
}

TEST(WordLength, IsZeroBeforeAnyOtherCharacter) {
    EXPECT_EQ(WordLength(""), 0U);
    EXPECT_EQ(WordLength(" a"), 0U);
    EXPECT_EQ(WordLength("_a"), 0U);
    EXPECT_EQ(WordLength("\xC3\xA4"), 0U);
}

TEST(EndsWord, IsTrueAtTheEndAndBeforeOtherCharacters) {
    EXPECT_TRUE(EndsWord("ab", 2));
    EXPECT_TRUE(EndsWord("ab", 3));
    EXPECT_TRUE(EndsWord("ab-c", 2));
    EXPECT_TRUE(EndsWord("", 0));
}

TEST(EndsWord, IsFalseWithinAWord) {
    EXPECT_FALSE(EndsWord("ab", 1));
    EXPECT_FALSE(EndsWord("a1", 1));
    EXPECT_FALSE(EndsWord("ab", 0));
}

}  // namespace
}  // namespace NVORHOST
