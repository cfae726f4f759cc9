// Times of documents.
#include "fleet/load/timestamp.h"

#include <gtest/gtest.h>

namespace NFLEET {
namespace {

TEST(ParseTimestamp, SubtractsTheOffset) {
    EXPECT_EQ(ParseTimestamp("2024-03-01T12:00:00Z"), 1709294400);
    EXPECT_EQ(ParseTimestamp("2024-03-01T12:00:00"), 1709294400);
    EXPECT_EQ(ParseTimestamp("2024-03-01T12:00:00+01:00"), 1709290800);
    EXPECT_EQ(ParseTimestamp("2024-03-01T12:00:00-05:30"), 1709314200);
    EXPECT_EQ(ParseTimestamp("2024-02-29T23:59:59+00:00"), 1709251199);
}

TEST(ParseTimestamp, ReturnsNulloptForOtherText) {
    for (const std::string_view text :
         {"", "yesterday", "2024-03-01", "2024-03-01 12:00:00", "2024-02-30T12:00:00Z",
          "2024-13-01T12:00:00Z", "2024-03-01T12:00:00+1:00", "2024-03-01T12:00:00Zulu",
          "2024-03-01T99:00:00Z", "1970-01-01T00:00:00Z", "0000-01-01T00:00:00Z",
          "2024-03-01T12:00:00+01:00\n"}) {
        EXPECT_EQ(ParseTimestamp(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace NFLEET
