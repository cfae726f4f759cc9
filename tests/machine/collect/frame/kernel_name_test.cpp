#include "machine/collect/frame/kernel_name.h"

#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(FindNumberAfter, ReturnsTheNumberAfterThePrefix) {
    EXPECT_EQ(FindNumberAfter("cpu12", "cpu"), 12U);
    EXPECT_EQ(FindNumberAfter("sr0", "sr"), 0U);
}

TEST(FindNumberAfter, ReturnsNulloptForOtherNames) {
    EXPECT_EQ(FindNumberAfter("card0-VGA-1", "card"), std::nullopt);
    EXPECT_EQ(FindNumberAfter("nst0", "st"), std::nullopt);
    EXPECT_EQ(FindNumberAfter("st", "st"), std::nullopt);
    EXPECT_EQ(FindNumberAfter("st-1", "st"), std::nullopt);
    EXPECT_EQ(FindNumberAfter("", "st"), std::nullopt);
}

TEST(ListNumbered, SelectsTheNamesWithANumber) {
    const TMachine machine =
        ParseMachineTree("/d/sr1/size = 1\n/d/sr0/size = 1\n/d/sra/size = 1\n/d/sda/size = 1\n");
    EXPECT_THAT(ListNumbered(machine.files, "/d", "sr"), ElementsAre("sr0", "sr1"));
    EXPECT_THAT(ListNumbered(machine.files, "/missing", "sr"), IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
