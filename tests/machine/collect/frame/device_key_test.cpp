#include "machine/collect/frame/device_key.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(MakeUniqueKeys, UsesThePositionIfTheIdentityIsMissingOrDuplicate) {
    std::vector<std::string> notes;
    EXPECT_THAT(MakeUniqueKeys({{"A", "p1"}, {std::nullopt, "p2"}, {"B", "p3"}, {"B", "p4"}}, "disk", notes),
                ElementsAre("A", "p2", "B@p3", "B@p4"));
    EXPECT_THAT(notes, ElementsAre("2 disks share the key B; their positions tell them apart"));
}

TEST(MakeUniqueKeys, NumbersSourcesWithEqualIdentityAndPosition) {
    std::vector<std::string> notes;
    EXPECT_THAT(
        MakeUniqueKeys({{"A", "p"}, {"A", "p"}, {std::nullopt, "q"}, {std::nullopt, "q"}}, "disk", notes),
        ElementsAre("A@p", "A@p#2", "q", "q#2"));
}

TEST(MakeUniqueKeys, DoesNotDependOnTheOrderOfDevices) {
    std::vector<std::string> notes;
    EXPECT_THAT(MakeUniqueKeys({{"B", "p3"}, {"B", "p4"}}, "disk", notes), ElementsAre("B@p3", "B@p4"));
    EXPECT_THAT(MakeUniqueKeys({{"B", "p4"}, {"C", "p1"}, {"B", "p3"}}, "disk", notes),
                ElementsAre("B@p4", "C", "B@p3"));
}

TEST(MakeUniqueKeys, TruncatesLongKeysAndKeepsThemUnique) {
    std::vector<std::string> notes;
    const std::string longName(70, 'x');
    const auto keys = MakeUniqueKeys({{longName + "1", ""}, {longName + "2", ""}, {std::string(64, 'y'), ""}},
                                     "disk", notes);
    EXPECT_EQ(keys[0].size(), 64U);
    EXPECT_EQ(keys[0].substr(0, 47), keys[1].substr(0, 47));
    EXPECT_NE(keys[0], keys[1]);
    EXPECT_EQ(keys[2], std::string(64, 'y'));
    EXPECT_THAT(notes, IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
