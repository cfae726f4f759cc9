// Boards of the firmware's table, and of the kernel's excerpt if the table is missing.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* card = "KELSG_Card";

std::string Table(const std::string& lines) {
    return "/sys/firmware/dmi/tables/DMI smbios:\n" + lines;
}

// A board with features and a kind, as hexadecimal digits, and a location.
std::string Board(const std::string& features, const std::string& kind, const std::string& location) {
    return "| 2: 01 02 03 04 05 " + features + " 06 00 03 " + kind +
           " 00 \"Maker\" \"Board\" \"A01\" \"SN-1\" \"Asset\" \"" + location + "\"\n";
}

TEST(Cards, HaveEveryPropertyOfTheTable) {
    TCollected collected;
    Collect(Table(Board("03", "0a", "Main")), collected);
    ASSERT_EQ(collected.CountInstances(card), 1U);
    EXPECT_EQ(collected.Get(card, "ElementName"), "Maker Board");
    EXPECT_EQ(collected.Get(card, "Description"), "Baseboard, motherboard");
    EXPECT_EQ(collected.Get(card, "Tag"), "Baseboard");
    EXPECT_EQ(collected.Get(card, "Manufacturer"), "Maker");
    EXPECT_EQ(collected.Get(card, "Model"), "Board");
    EXPECT_EQ(collected.Get(card, "Version"), "A01");
    EXPECT_EQ(collected.Get(card, "SerialNumber"), "SN-1");
    EXPECT_EQ(collected.Get(card, "UserTracking"), "Asset");
    EXPECT_EQ(collected.Get(card, "HostingBoard"), "true");
    EXPECT_EQ(collected.Get(card, "RequiresDaughterBoard"), "true");
    EXPECT_EQ(collected.Get(card, "RemovalConditions"), "2");
}

TEST(Cards, AreRemovableByTheirFeatureFlags) {
    TCollected collected;
    Collect(Table(Board("00", "00", "1") + Board("04", "00", "2") + Board("08", "00", "3") +
                  Board("1c", "00", "4") + Board("10", "00", "5")),
            collected);
    EXPECT_THAT(collected.GetAll(card, "RemovalConditions"), ElementsAre("2", "3", "3", "4", "4"));
    EXPECT_THAT(collected.GetAll(card, "HostingBoard"),
                ElementsAre("false", "false", "false", "false", "false"));
}

TEST(Cards, HaveNoFeaturesInTheFirstVersion) {
    TCollected collected;
    Collect(Table("| 2: 01 02 00 00 \"Maker\" \"Board\"\n"), collected);
    EXPECT_EQ(collected.Get(card, "RemovalConditions"), "absent");
    EXPECT_EQ(collected.Get(card, "HostingBoard"), "absent");
    EXPECT_EQ(collected.Get(card, "RequiresDaughterBoard"), "absent");
    EXPECT_EQ(collected.Get(card, "Description"), "Baseboard");
}

TEST(Cards, LeaveOutPlaceholders) {
    TCollected collected;
    Collect(Table("| 2: 01 02 03 04 05 01 \"To be filled by O.E.M.\" \"Default string\" \"x.x\" \"0000\" "
                  "\"N/A\"\n"),
            collected);
    for (const char* property : {"Manufacturer", "Model", "Version", "SerialNumber", "UserTracking"}) {
        EXPECT_EQ(collected.Get(card, property), "absent") << property;
    }
    EXPECT_EQ(collected.Get(card, "ElementName"), "Baseboard");
}

TEST(Cards, HaveKeysOfTheirLocationsOrElseTheirPlacesInTheTable) {
    TCollected collected;
    Collect(Table(Board("01", "0a", "Slot 1") + Board("00", "0d", "Slot 1") + Board("00", "09", "Riser") +
                  Board("00", "09", "Default string")),
            collected);
    EXPECT_THAT(collected.GetAll(card, "Tag"), ElementsAre("Baseboard@board 1", "Baseboard@board 2",
                                                           "Baseboard@Riser", "Baseboard@board 4"));
    EXPECT_THAT(collected.GetReport("board").notes,
                ElementsAre("4 boards share the key Baseboard; their positions tell them apart"));
}

TEST(Cards, HaveANameForEachKindOfBoard) {
    const auto describe = [](const std::string& kind) {
        TCollected collected;
        Collect(Table(Board("00", kind, "")), collected);
        return collected.Get(card, "Description");
    };
    EXPECT_EQ(describe("01"), "Baseboard");
    EXPECT_EQ(describe("02"), "Baseboard");
    EXPECT_EQ(describe("03"), "Baseboard, server blade");
    EXPECT_EQ(describe("04"), "Baseboard, connectivity switch");
    EXPECT_EQ(describe("05"), "Baseboard, system management module");
    EXPECT_EQ(describe("06"), "Baseboard, processor module");
    EXPECT_EQ(describe("07"), "Baseboard, I/O module");
    EXPECT_EQ(describe("08"), "Baseboard, memory module");
    EXPECT_EQ(describe("09"), "Baseboard, daughter board");
    EXPECT_EQ(describe("0a"), "Baseboard, motherboard");
    EXPECT_EQ(describe("0b"), "Baseboard, processor and memory module");
    EXPECT_EQ(describe("0c"), "Baseboard, processor and I/O module");
    EXPECT_EQ(describe("0d"), "Baseboard, interconnect board");
    EXPECT_EQ(describe("0e"), "Baseboard");
}

constexpr const char* excerpt =
    "/sys/class/dmi/id/board_vendor = Maker\n"
    "/sys/class/dmi/id/board_name = Board\n"
    "/sys/class/dmi/id/board_version = A01\n"
    "/sys/class/dmi/id/board_asset_tag = Asset\n";

TEST(Cards, ComeFromTheKernelsExcerptIfTheTableIsDenied) {
    TCollected collected;
    Collect(std::string("/sys/firmware/dmi/tables/DMI !denied\n") + excerpt +
                "/sys/class/dmi/id/board_serial !denied\n",
            collected);
    ASSERT_EQ(collected.CountInstances(card), 1U);
    EXPECT_EQ(collected.Get(card, "Tag"), "Baseboard");
    EXPECT_EQ(collected.Get(card, "ElementName"), "Maker Board");
    EXPECT_EQ(collected.Get(card, "Version"), "A01");
    EXPECT_EQ(collected.Get(card, "UserTracking"), "Asset");
    EXPECT_EQ(collected.Get(card, "SerialNumber"), "absent");
    EXPECT_EQ(collected.Get(card, "HostingBoard"), "absent");
    EXPECT_THAT(collected.GetReport("board").deniedSources, ElementsAre("/sys/class/dmi/id/board_serial"));
}

TEST(Cards, AreAbsentIfTheTableHasNone) {
    TCollected collected;
    Collect(Table("| 1: 01 00 00 00 \"Maker\"\n") + excerpt, collected);
    EXPECT_EQ(collected.CountInstances(card), 0U);
}

TEST(Cards, NeedAMakerOrABoardInTheExcerpt) {
    TCollected collected;
    Collect("/sys/class/dmi/id/board_version = A01\n", collected);
    EXPECT_EQ(collected.CountInstances(card), 0U);
    EXPECT_THAT(collected.GetReport("board").notes, IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
