#include "machine/parse/cpu_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(ParseCpuList, ExpandsRanges) {
    EXPECT_THAT(ParseCpuList("0-2,5,7-8\n"), ElementsAre(0, 1, 2, 5, 7, 8));
    EXPECT_THAT(ParseCpuList("3"), ElementsAre(3));
    EXPECT_THAT(ParseCpuList("65535"), ElementsAre(65535));
}

TEST(ParseCpuList, ReadsAnOpenRangeAsItsFirstNumber) {
    EXPECT_THAT(ParseCpuList("0-"), ElementsAre(0));
}

TEST(ParseCpuList, IsEmptyForAnEmptyText) {
    EXPECT_THAT(ParseCpuList(""), IsEmpty());
    EXPECT_THAT(ParseCpuList("\n"), IsEmpty());
}

TEST(ParseCpuList, RejectsMalformedLists) {
    EXPECT_THAT(ParseCpuList("a"), IsEmpty());
    EXPECT_THAT(ParseCpuList("0,,1"), IsEmpty());
    EXPECT_THAT(ParseCpuList("0 1"), IsEmpty());
    EXPECT_THAT(ParseCpuList("-1"), IsEmpty());
}

TEST(ParseCpuList, RejectsNumbersOutOfOrder) {
    EXPECT_THAT(ParseCpuList("2-1"), IsEmpty());
    EXPECT_THAT(ParseCpuList("5,4"), IsEmpty());
    EXPECT_THAT(ParseCpuList("0-3,3-5"), IsEmpty());
}

TEST(ParseCpuList, RejectsNumbersAboveTheLimit) {
    EXPECT_THAT(ParseCpuList("65536"), IsEmpty());
    EXPECT_THAT(ParseCpuList("0-4294967295"), IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
