#include "inventory/check/value_form.h"

#include <gtest/gtest.h>

namespace NINVENTORY {
namespace {

TEST(ValueForm, IsThatOfTheType) {
    EXPECT_TRUE(HasForm("unsignedByte", "255"));
    EXPECT_FALSE(HasForm("unsignedByte", "256"));
    EXPECT_FALSE(HasForm("unsignedInt", "-1"));
    EXPECT_TRUE(HasForm("unsignedLong", "18446744073709551615"));
    EXPECT_TRUE(HasForm("short", "-32768"));
    EXPECT_FALSE(HasForm("short", "1.5"));
    EXPECT_FALSE(HasForm("int", ""));
    EXPECT_FALSE(HasForm("int", "1 "));
    EXPECT_TRUE(HasForm("boolean", "true"));
    EXPECT_FALSE(HasForm("boolean", "TRUE"));
    EXPECT_TRUE(HasForm("float", "0.5"));
    EXPECT_FALSE(HasForm("float", "0,5"));
    EXPECT_TRUE(HasForm("string", ""));
}

TEST(ValueForm, OfADateHasAnOffset) {
    EXPECT_TRUE(HasForm("dateTime", "2024-02-29T13:45:00+01:00"));
    EXPECT_TRUE(HasForm("dateTime", "2024-02-29T23:59:60-12:00"));
    EXPECT_FALSE(HasForm("dateTime", "2024-02-29T13:45:00"));
    EXPECT_FALSE(HasForm("dateTime", "2024-13-01T00:00:00+00:00"));
    EXPECT_FALSE(HasForm("dateTime", "2024-01-32T00:00:00+00:00"));
    EXPECT_FALSE(HasForm("dateTime", "2024-01-01T24:00:00+00:00"));
    EXPECT_FALSE(HasForm("dateTime", "2024-01-01T00:60:00+00:00"));
}

TEST(ValueForm, OfAnUnknownTypeIsNotChecked) {
    EXPECT_FALSE(IsKnownType("decimal"));
    EXPECT_TRUE(HasForm("decimal", "x"));
}

}  // namespace
}  // namespace NINVENTORY
