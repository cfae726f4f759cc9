#include "machine/collect/frame/operational_status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::Optional;

TEST(FindDiskStatus, MapsTheWordsOfScsiAndNvme) {
    const auto status = [](std::string_view word) {
        return FindDiskStatus(word).value_or(TOperationalStatus{});
    };
    EXPECT_THAT(status("running"), ElementsAre(2));
    EXPECT_THAT(status("transport-offline"), ElementsAre(13));
    EXPECT_THAT(status("created"), ElementsAre(8));
    EXPECT_THAT(status("quiesce"), ElementsAre(15));
    EXPECT_THAT(status("created-blocked"), ElementsAre(4));
    EXPECT_THAT(status("cancel"), ElementsAre(9));
    EXPECT_THAT(status("live"), ElementsAre(2));
    EXPECT_THAT(status("resetting"), ElementsAre(8));
    EXPECT_THAT(status("deleting (no IO)"), ElementsAre(9));
    EXPECT_THAT(status("dead"), ElementsAre(7));
    EXPECT_EQ(FindDiskStatus("unheard of"), std::nullopt);
    EXPECT_EQ(FindDiskStatus(""), std::nullopt);
}

TEST(FindInterfaceStatus, MapsTheWordsOfOperstate) {
    EXPECT_THAT(FindInterfaceStatus("up"), Optional(ElementsAre(2)));
    EXPECT_THAT(FindInterfaceStatus("down"), Optional(ElementsAre(10)));
    EXPECT_THAT(FindInterfaceStatus("lowerlayerdown"), Optional(ElementsAre(16)));
    EXPECT_THAT(FindInterfaceStatus("unknown"), Optional(ElementsAre(0)));
    EXPECT_EQ(FindInterfaceStatus("UP"), std::nullopt);
}

TEST(FindRaidVolumeStatus, MapsEveryWordOfTheRaidClass) {
    EXPECT_THAT(FindRaidVolumeStatus("active"), Optional(ElementsAre(2)));
    EXPECT_THAT(FindRaidVolumeStatus("degraded"), Optional(ElementsAre(3)));
    EXPECT_THAT(FindRaidVolumeStatus("resyncing"), Optional(ElementsAre(3)));
    EXPECT_THAT(FindRaidVolumeStatus("offline"), Optional(ElementsAre(6)));
    EXPECT_THAT(FindRaidVolumeStatus("unknown"), Optional(ElementsAre(0)));
    EXPECT_EQ(FindRaidVolumeStatus("running"), std::nullopt);
}

TEST(FindArrayStatus, CombinesStateMissingDisksAndSynchronisation) {
    EXPECT_THAT(FindArrayStatus("clean", 0, "idle"), Optional(ElementsAre(2)));
    EXPECT_THAT(FindArrayStatus("read-auto", 0, ""), Optional(ElementsAre(2)));
    EXPECT_THAT(FindArrayStatus("clean", 0, "check"), Optional(ElementsAre(2)));
    EXPECT_THAT(FindArrayStatus("active", 1, "idle"), Optional(ElementsAre(3)));
    EXPECT_THAT(FindArrayStatus("active", 0, "resync"), Optional(ElementsAre(2, 11)));
    EXPECT_THAT(FindArrayStatus("active", 1, "recover"), Optional(ElementsAre(3, 11)));
    EXPECT_THAT(FindArrayStatus("inactive", 1, "resync"), Optional(ElementsAre(10)));
    EXPECT_EQ(FindArrayStatus("unheard of", 0, "idle"), std::nullopt);
    EXPECT_EQ(FindArrayStatus("", 0, ""), std::nullopt);
}

TEST(FindProcessorStatus, UsesTheLowestThreeBits) {
    EXPECT_THAT(FindProcessorStatus(0x40), Optional(ElementsAre(0)));
    EXPECT_THAT(FindProcessorStatus(0x41), Optional(ElementsAre(2)));
    EXPECT_THAT(FindProcessorStatus(0x42), Optional(ElementsAre(10)));
    EXPECT_THAT(FindProcessorStatus(0x43), Optional(ElementsAre(6)));
    EXPECT_THAT(FindProcessorStatus(3), Optional(ElementsAre(6)));
    EXPECT_THAT(FindProcessorStatus(0x44), Optional(ElementsAre(15)));
    EXPECT_THAT(FindProcessorStatus(0x47), Optional(ElementsAre(1)));
    EXPECT_EQ(FindProcessorStatus(0x45), std::nullopt);
}

TEST(FindChassisStatus, ReturnsTheWorstState) {
    EXPECT_THAT(FindChassisStatus({3, 4, 3}), Optional(ElementsAre(3)));
    EXPECT_THAT(FindChassisStatus({6, 5, 3}), Optional(ElementsAre(7)));
    EXPECT_THAT(FindChassisStatus({2, 3, std::nullopt}), Optional(ElementsAre(2)));
    EXPECT_THAT(FindChassisStatus({2, std::nullopt, 2}), Optional(ElementsAre(0)));
    EXPECT_EQ(FindChassisStatus({std::nullopt, 0, 7}), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
