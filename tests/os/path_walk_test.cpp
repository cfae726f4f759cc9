#include "os/path_walk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> PopAll(TPendingNames& names) {
    std::vector<std::string> popped;
    while (!names.IsEmpty()) {
        popped.push_back(names.Pop());
    }
    return popped;
}

TEST(PendingNames, PopsTheNamesOfAPathInOrder) {
    TPendingNames names("/sys/class/net");
    EXPECT_THAT(PopAll(names), ElementsAre("sys", "class", "net"));
}

TEST(PendingNames, LeavesOutEmptyNamesAndDots) {
    TPendingNames names("//a/./b//../c/.");
    EXPECT_THAT(PopAll(names), ElementsAre("a", "b", "..", "c"));
}

TEST(PendingNames, AreEmptyForTheRoot) {
    TPendingNames names("/");
    EXPECT_THAT(PopAll(names), IsEmpty());
}

TEST(PendingNames, PopsAPushedPathBeforeTheRest) {
    TPendingNames names("link/rest");
    EXPECT_EQ(names.Pop(), "link");
    names.PushPath("../target");
    EXPECT_THAT(PopAll(names), ElementsAre("..", "target", "rest"));
}

TEST(ResolveLinkText, StartsAtTheFolderOfTheLink) {
    EXPECT_EQ(ResolveLinkText("/sys/block/sda", "../devices/pci0000:00/sda"), "/sys/devices/pci0000:00/sda");
    EXPECT_EQ(ResolveLinkText("/sys/block/sda", "sdb"), "/sys/block/sdb");
}

TEST(ResolveLinkText, StartsAtTheRootForAnAbsoluteTarget) {
    EXPECT_EQ(ResolveLinkText("/sys/block/sda", "/sys/devices/sda"), "/sys/devices/sda");
}

TEST(ResolveLinkText, StaysAtTheRoot) {
    EXPECT_EQ(ResolveLinkText("/a", "../../../b/./c"), "/b/c");
    EXPECT_EQ(ResolveLinkText("/a", "../.."), "");
}

}  // namespace
}  // namespace NVORHOST
