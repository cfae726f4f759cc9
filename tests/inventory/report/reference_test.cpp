#include "inventory/report/reference.h"

#include <gtest/gtest.h>

namespace NINVENTORY {
namespace {

TEST(ParseReference, ReadsClassKeyAndValue) {
    const auto reference = ParseReference("KELSG_DiskDrive.DeviceID=\"naa.5000\"");
    ASSERT_TRUE(reference);
    EXPECT_EQ(reference->className, "KELSG_DiskDrive");
    EXPECT_EQ(reference->property, "DeviceID");
    EXPECT_EQ(reference->value, "naa.5000");
}

TEST(ParseReference, RemovesTheBackslashesOfTheValue) {
    EXPECT_EQ(ParseReference(R"(C.Key="a\"b\\c.d=\"e")")->value, R"(a"b\c.d="e)");
}

TEST(ParseReference, ReturnsNulloptForPathsOfOtherForms) {
    for (const char* text :
         {"", "C", "C=@", "C=\"v\"", "C.K=5", "C.K=\"v", "C.K=\"v\\", "C.K=\"v\",L=\"w\""}) {
        EXPECT_FALSE(ParseReference(text)) << text;
    }
}

}  // namespace
}  // namespace NINVENTORY
