#include "host/cim_date_time.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using NKELVOR20::TCIMDateTime;

TEST(DateTime, ReadsEveryFieldOfATimestamp) {
    const auto time = TCIMDateTime::FromText("20231231235958.123456+090");
    ASSERT_TRUE(time);
    EXPECT_EQ(time->GetYear(), 2023);
    EXPECT_EQ(time->GetMonth(), 12);
    EXPECT_EQ(time->GetDay(), 31U);
    EXPECT_EQ(time->GetHour(), 23);
    EXPECT_EQ(time->GetMinute(), 59);
    EXPECT_EQ(time->GetSecond(), 58);
    EXPECT_EQ(time->GetMicrosecond(), 123456U);
    EXPECT_EQ(time->GetUTCOffset(), 90);
    EXPECT_FALSE(time->IsInterval());
}

TEST(DateTime, WestOfUtcIsNegative) {
    EXPECT_EQ(TCIMDateTime::FromText("20230101000000.000000-480")->GetUTCOffset(), -480);
}

TEST(DateTime, IntervalHasItsDayCountInDay) {
    const auto interval = TCIMDateTime::FromText("12345678091011.000012:000");
    ASSERT_TRUE(interval);
    EXPECT_TRUE(interval->IsInterval());
    EXPECT_EQ(interval->GetDay(), 12345678U);
    EXPECT_EQ(interval->GetHour(), 9);
    EXPECT_EQ(interval->GetMinute(), 10);
    EXPECT_EQ(interval->GetSecond(), 11);
    EXPECT_EQ(interval->GetMicrosecond(), 12U);
    EXPECT_EQ(interval->GetYear(), 0);
    EXPECT_EQ(interval->GetMonth(), 0);
    EXPECT_EQ(interval->GetUTCOffset(), 0);
}

TEST(DateTime, InsignificantFieldsReadAsZero) {
    const auto time = TCIMDateTime::FromText("202306**********.******+000");
    EXPECT_FALSE(time);  // 27 characters
    const auto month = TCIMDateTime::FromText("202306********.******+000");
    ASSERT_TRUE(month);
    EXPECT_EQ(month->GetYear(), 2023);
    EXPECT_EQ(month->GetMonth(), 6);
    EXPECT_EQ(month->GetDay(), 0U);
    EXPECT_EQ(month->GetHour(), 0);
}

TEST(DateTime, PartOfTheMicrosecondsMayBeInsignificant) {
    EXPECT_EQ(TCIMDateTime::FromText("20230615120000.12****+000")->GetMicrosecond(), 120000U);
}

class DateTimeRoundTrip : public testing::TestWithParam<const char*> {};

TEST_P(DateTimeRoundTrip, WritesWhatItRead) {
    const auto time = TCIMDateTime::FromText(GetParam());
    ASSERT_TRUE(time) << GetParam();
    EXPECT_EQ(time->ToString(), GetParam());
    EXPECT_EQ(*TCIMDateTime::FromText(time->ToString()), *time);
}

INSTANTIATE_TEST_SUITE_P(
    Valid, DateTimeRoundTrip,
    testing::Values("00000101000000.000000-720",  // the first year and the westernmost offset
                    "99991231235960.999999+840",  // leap second
                    "20240229235959.000000+000",  // leap year
                    "20000229******.******+000",  // leap year of a century
                    "20230615120000.000001-005",  //
                    "20230615120000.12345*+060",  //
                    "20230615120000.******+060",  //
                    "202306151200**.******+060",  //
                    "2023061512****.******+060",  //
                    "20230615******.******+060",  //
                    "202306********.******+060",  //
                    "2023**********.******+060",  //
                    "**************.******+060",  //
                    "00000000000000.000000:000",  //
                    "99999999235959.999999:000",  //
                    "00000012******.******:000",  //
                    "**************.******:000"));

class DateTimeRefusal : public testing::TestWithParam<const char*> {};

TEST_P(DateTimeRefusal, IsNullopt) {
    EXPECT_FALSE(TCIMDateTime::FromText(GetParam())) << GetParam();
}

INSTANTIATE_TEST_SUITE_P(
    Malformed, DateTimeRefusal,
    testing::Values("",                             //
                    "20230615120000.000000+00",     // too short
                    "20230615120000.000000+0000",   // too long
                    "20230615120000,000000+000",    // no dot
                    "20230615120000.000000 000",    // no sign
                    "20230615120000.000000+0a0",    //
                    "20230615120000.000000+***",    // an offset has no insignificant digits
                    "2023a615120000.000000+000",    //
                    "20230615120000.00 000+000",    //
                    "20231315120000.000000+000",    // month
                    "20230632120000.000000+000",    // day
                    "20230631120000.000000+000",    // June has 30 days
                    "20240230120000.000000+000",    // February never has 30
                    "20230229120000.000000+000",    // no leap year
                    "21000229120000.000000+000",    // 2100 is not a leap year
                    "00000000000000.000000+000",    // no month and no day
                    "20230015120000.000000+000",    // no month
                    "202300********.******+000",    //
                    "20230600120000.000000+000",    // no day
                    "20230600******.******+000",    //
                    "20230615120000.000000+841",    // no place is further east
                    "20230615120000.000000+999",    //
                    "20230615120000.000000-721",    // nor further west
                    "20230615240000.000000+000",    // hour
                    "20230615126000.000000+000",    // minute
                    "20230615120061.000000+000",    // second
                    "00000001240000.000000:000",    // hour of an interval
                    "00000001000000.000000:001",    // an interval has no offset
                    "2023061512000*.******+000",    // half a field
                    "202306151200**.000000+000",    // a hole in front of digits
                    "20230615120000.0*0000+000",    //
                    "202*0615120000.000000+000",    //
                    "2023**********.******:000"));  // half the day count

TEST(DateTime, DefaultIsAllZero) {
    EXPECT_EQ(TCIMDateTime().ToString(), "00000000000000.000000+000");
}

TEST(DateTime, KeepsItsFields) {
    TCIMDateTime::TFields fields;
    fields.year = 2024;
    fields.month = 2;
    fields.day = 29;
    fields.hour = 1;
    fields.minute = 2;
    fields.second = 3;
    fields.microsecond = 4;
    fields.utcOffset = -120;
    EXPECT_EQ(TCIMDateTime(fields).ToString(), "20240229010203.000004-120");
}

TEST(DateTime, IsEqualIfEveryFieldIsEqual) {
    const auto time = TCIMDateTime::FromText("20230615120000.000000+060");
    EXPECT_EQ(*time, *TCIMDateTime::FromText("20230615120000.000000+060"));
    EXPECT_FALSE(*time == *TCIMDateTime::FromText("20230615120000.000000+000"));
    EXPECT_FALSE(*time == *TCIMDateTime::FromText("20230615120000.00000*+060"));
}

TEST(DateTime, MinusZeroOffsetIsPlusZero) {
    EXPECT_EQ(TCIMDateTime::FromText("20230615120000.000000-000")->ToString(), "20230615120000.000000+000");
}

}  // namespace
