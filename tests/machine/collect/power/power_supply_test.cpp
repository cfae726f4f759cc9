#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* supply = "CIM_PowerSupply";

std::string Table(const std::string& lines) {
    return "/sys/firmware/dmi/tables/DMI smbios:\n" + lines;
}

TEST(PowerSupplies, HaveEveryPropertyOfTheTable) {
    TCollected collected;
    Collect(Table("| 39: 01 01 02 03 04 05 06 07 ee 02 93 11 \"Bay 1\" \"PSU-750\" \"Maker\" \"SN-2\" "
                  "\"Asset 3\" \"PN-750\" \"B\"\n"),
            collected);
    ASSERT_EQ(collected.CountInstances(supply), 1U);
    EXPECT_EQ(collected.Get(supply, "ElementName"), "PSU-750");
    EXPECT_EQ(collected.Get(supply, "Description"), "Hot-replaceable power supply");
    EXPECT_EQ(collected.Get(supply, "DeviceID"), "SN-2");
    EXPECT_EQ(collected.Get(supply, "OtherIdentifyingInfo"), "{Maker, PN-750, B, SN-2, Asset 3, Bay 1}");
    EXPECT_EQ(collected.Get(supply, "IdentifyingDescriptions"),
              "{Manufacturer, Part number, Revision, Serial number, Asset tag, Location}");
    EXPECT_EQ(collected.Get(supply, "IsSwitchingSupply"), "true");
    EXPECT_EQ(collected.Get(supply, "TotalOutputPower"), "750000");
}

TEST(PowerSupplies, LeaveOutEmptyBaysAndUnknownValues) {
    TCollected collected;
    Collect(Table("| 39: 01 01 00 00 00 00 00 00 00 80 00 00 \"Bay 1\"\n"
                  "| 39: 01 01 00 00 00 00 00 00 00 80 02 00 \"Bay 2\"\n"
                  "| 39: 01 00 00 00 00 00 00 00 00 00 02 0c\n"),
            collected);
    EXPECT_THAT(collected.GetAll(supply, "DeviceID"), ElementsAre("Bay 2", "power supply 3"));
    EXPECT_THAT(collected.GetAll(supply, "Description"), ElementsAre("Power supply", "Power supply"));
    EXPECT_THAT(collected.GetAll(supply, "IsSwitchingSupply"), ElementsAre("absent", "false"));
    EXPECT_THAT(collected.GetAll(supply, "TotalOutputPower"), ElementsAre("absent", "absent"));
}

}  // namespace
}  // namespace NVORHOST
