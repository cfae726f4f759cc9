#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(DataSource, DescribesTheCollectingProgramAndItsVersion) {
    TCollected collected;
    Collect("", collected);
    ASSERT_EQ(collected.CountInstances("KELSG_DataSource"), 1U);
    EXPECT_EQ(collected.Get("KELSG_DataSource", "ElementName"), "noxinfo");
    EXPECT_EQ(collected.Get("KELSG_DataSource", "Description"), "Inventory of this machine's hardware");
    EXPECT_EQ(collected.Get("KELSG_DataSource", "Name"), "noxinfo");
    EXPECT_EQ(collected.Get("KELSG_DataSource", "Version"), NOXINFO_VERSION);
}

TEST(DataSource, ReadsNothing) {
    TCollected collected;
    Collect("", collected);
    EXPECT_EQ(collected.GetReport("data-source").instances, 1U);
    EXPECT_THAT(collected.GetReport("data-source").deniedSources, testing::IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
