#include "fleet/ask/moment.h"

#include <gtest/gtest.h>

namespace NFLEET {
namespace {

constexpr TSeconds now = 1772420400;  // 2026-03-02T03:00:00Z

TEST(ParseMoment, ReadsDatesAsMidnightInUtc) {
    EXPECT_EQ(ParseMoment("2026-03-02", now), now - TSeconds{3} * 3600);
    EXPECT_EQ(ParseMoment("1970-01-01", now), 0);
}

TEST(ParseMoment, ReadsTimesWithTheirOffset) {
    EXPECT_EQ(ParseMoment("2026-03-02T03:00:00Z", now), now);
    EXPECT_EQ(ParseMoment("2026-03-02T04:00:00+01:00", now), now);
    EXPECT_EQ(ParseMoment("2026-03-01T22:30:00-04:30", now), now);
}

TEST(ParseMoment, SubtractsSpansFromNow) {
    EXPECT_EQ(ParseMoment("90s", now), now - 90);
    EXPECT_EQ(ParseMoment("5m", now), now - 300);
    EXPECT_EQ(ParseMoment("2h", now), now - 7200);
    EXPECT_EQ(ParseMoment("7d", now), now - 604800);
    EXPECT_EQ(ParseMoment("1w", now), now - 604800);
}

TEST(ParseMoment, RejectsOtherTexts) {
    for (const char* text :
         {"", "d", "7", "7y", "-7d", "99999999w", "2026-02-30", "2026-3-2", "2026-03-02T03:00:00",
          "2026-03-02T24:00:00Z", "2026-03-02T03:00Z", "2026-03-02T03:00:00+1", "yesterday"}) {
        EXPECT_EQ(ParseMoment(text, now), std::nullopt) << text;
    }
}

TEST(FormatMoment, WritesTimesInUtc) {
    EXPECT_EQ(FormatMoment(now), "2026-03-02T03:00:00Z");
    EXPECT_EQ(FormatMoment(-1), "1969-12-31T23:59:59Z");
}

}  // namespace
}  // namespace NFLEET
