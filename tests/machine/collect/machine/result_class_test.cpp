#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

TEST(ResultClass, IsDeclaredWithTheTextsOfAnAnswer) {
    TCollected collected;
    Collect("", collected);
    const auto resultClass = collected.target.FindClass("KELSG_CADAT");
    ASSERT_NE(resultClass, nullptr);
    std::vector<std::string> names;
    for (const TPropertyDeclaration& declaration : resultClass->GetDeclarations()) {
        names.push_back(declaration.name);
        EXPECT_EQ(declaration.type, ECimType::eString) << declaration.name;
        EXPECT_FALSE(declaration.isArray) << declaration.name;
    }
    EXPECT_THAT(names, ElementsAre("InventoryRCF", "KELID", "MachineType", "Credential"));
}

TEST(ResultClass, HasNoInstanceBeforeAPlugInRuns) {
    TCollected collected;
    Collect("", collected);
    EXPECT_EQ(collected.CountInstances("KELSG_CADAT"), 0U);
    EXPECT_EQ(collected.GetReport("result").instances, 0U);
}

}  // namespace
}  // namespace NVORHOST
