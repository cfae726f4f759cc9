#include "commandline/nearest_word.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace NVORHOST {
namespace {

const std::vector<std::string> known{"--directory", "--kel-id", "--only", "collect", "capture", "collectors"};

TEST(NearestWord, HasFewInsertionsDeletionsReplacementsOrSwaps) {
    EXPECT_EQ(FindNearest("--directry", known), "--directory");    // one letter is missing
    EXPECT_EQ(FindNearest("--directorry", known), "--directory");  // one is too many
    EXPECT_EQ(FindNearest("--direktory", known), "--directory");   // one is another
    EXPECT_EQ(FindNearest("--idrectory", known), "--directory");   // two have changed places
    EXPECT_EQ(FindNearest("-only", known), "--only");
    EXPECT_EQ(FindNearest("kelid", known), "--kel-id");
}

TEST(NearestWord, MayStartWithTheWord) {
    EXPECT_EQ(FindNearest("--dir", known), "--directory");
    EXPECT_EQ(FindNearest("coll", known), "collect");
}

TEST(NearestWord, IsNulloptIfNoneIsNear) {
    for (const char* word : {"", "-", "--", "x", "--color", "inventory", "zzz"}) {
        EXPECT_EQ(FindNearest(word, known), std::nullopt) << word;
    }
    EXPECT_EQ(FindNearest(std::string(1'000'000, 'x'), known), std::nullopt);
    EXPECT_EQ(FindNearest("collect", {}), std::nullopt);
}

TEST(NearestWord, IsSuggestedOnlyIfThereIsOne) {
    EXPECT_EQ(DidYouMean("captrue", known), ": did you mean capture?");
    EXPECT_EQ(DidYouMean("inventory", known), "");
}

}  // namespace
}  // namespace NVORHOST
