#include "writer/dates.h"

#include "host/cim_date_time.h"
#include "tests/doubles/host_doubles.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace {

using NKELVOR20::TCIMDateTime;

std::string WithOffset(int minutes) {
    return FormatDateTime(TCIMDateTime({.day = 7,
                                        .year = 2009,
                                        .month = 3,
                                        .hour = 14,
                                        .minute = 5,
                                        .second = 9,
                                        .utcOffset = static_cast<std::int16_t>(minutes)}));
}

TEST(Dates, HaveOneTextForm) {
    EXPECT_EQ(WithOffset(60), "2009-03-07T14:05:09+01:00");
}

TEST(Dates, PrintEveryDigitOfZeroFields) {
    EXPECT_EQ(FormatDateTime(TCIMDateTime()), "0000-00-00T00:00:00+00:00");
}

TEST(Dates, PadShortFieldsWithZeros) {
    EXPECT_EQ(FormatDateTime(
                  TCIMDateTime({.day = 2, .year = 999, .month = 1, .hour = 3, .minute = 4, .second = 5})),
              "0999-01-02T03:04:05+00:00");
}

TEST(Dates, PrintLargeFieldsInFull) {
    EXPECT_EQ(
        FormatDateTime(TCIMDateTime(
            {.day = 4294967295, .year = 12345, .month = 65535, .hour = 100, .minute = 200, .second = 300})),
        "12345-65535-4294967295T100:200:300+00:00");
}

TEST(Dates, PrintOutOfRangeFieldsUnchanged) {
    EXPECT_EQ(FormatDateTime(TCIMDateTime({.day = 32, .year = 2009, .month = 13, .hour = 24})),
              "2009-13-32T24:00:00+00:00");
}

TEST(Dates, OmitMicroseconds) {
    EXPECT_EQ(FormatDateTime(TCIMDateTime({.microsecond = 999999})), "0000-00-00T00:00:00+00:00");
}

TEST(DateOffsets, DropTheirMinutes) {
    EXPECT_EQ(WithOffset(330), "2009-03-07T14:05:09+05:00");
    EXPECT_EQ(WithOffset(-210), "2009-03-07T14:05:09-03:00");
    EXPECT_EQ(WithOffset(345), "2009-03-07T14:05:09+05:00");
    EXPECT_EQ(WithOffset(59), "2009-03-07T14:05:09+00:00");
    EXPECT_EQ(WithOffset(0), "2009-03-07T14:05:09+00:00");
    EXPECT_EQ(WithOffset(840), "2009-03-07T14:05:09+14:00");
}

TEST(DateOffsets, KeepTheSignOfLessThanAnHour) {
    EXPECT_EQ(WithOffset(-1), "2009-03-07T14:05:09-00:00");
}

TEST(DateOffsets, AreNegativeOnlyDownToTwelveHours) {
    EXPECT_EQ(WithOffset(-720), "2009-03-07T14:05:09-12:00");
    EXPECT_EQ(WithOffset(-721), "2009-03-07T14:05:09+1080:00");
    EXPECT_EQ(WithOffset(-780), "2009-03-07T14:05:09+1079:00");
}

TEST(DateOffsets, FollowOneFormulaForEveryValue) {
    for (int offset = std::numeric_limits<std::int16_t>::min();
         offset <= std::numeric_limits<std::int16_t>::max(); ++offset) {
        std::string expected;
        if (offset >= -720 && offset < 0) {
            expected = "-" + std::string(-offset < 600 ? "0" : "") + std::to_string(-offset / 60);
        } else {
            const int hours = (offset < 0 ? 65536 + offset : offset) / 60;
            expected = "+" + std::string(hours < 10 ? "0" : "") + std::to_string(hours);
        }
        ASSERT_EQ(WithOffset(offset), "2009-03-07T14:05:09" + expected + ":00") << "offset " << offset;
    }
}

TEST(Timestamp, IsTheLocalTimeOfTheHost) {
    NDOUBLES::ResetHost();
    NDOUBLES::Host().localTime = [] { return *TCIMDateTime::FromText("20261231235958.123456-300"); };
    EXPECT_EQ(GetTimestamp(), "2026-12-31T23:59:58-05:00");
}

}  // namespace
