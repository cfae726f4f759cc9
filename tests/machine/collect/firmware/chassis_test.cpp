#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* chassis = "CIM_Chassis";

std::string Table(const std::string& lines) {
    return "/sys/firmware/dmi/tables/DMI smbios:\n" + lines;
}

// A chassis with its kind as hexadecimal digits.
std::string OfKind(const std::string& kind) {
    return "| 3: 01 " + kind + " 00 00 00 \"Maker\"\n";
}

TEST(Chassis, HasEveryPropertyOfTheTable) {
    TCollected collected;
    Collect(Table("| 3: 01 97 02 03 04 03 03 03 03 00 00 00 00 02 01 00 00 05 "
                  "\"Maker\" \"V2\" \"SN-7\" \"Asset 9\" \"SKU-1\"\n"),
            collected);
    ASSERT_EQ(collected.CountInstances(chassis), 1U);
    EXPECT_EQ(collected.Get(chassis, "ElementName"), "Maker Rack Mount Chassis");
    EXPECT_EQ(collected.Get(chassis, "Description"), "Chassis, 2 rack units high");
    EXPECT_EQ(collected.Get(chassis, "OperationalStatus"), "{2}");
    EXPECT_EQ(collected.Get(chassis, "Manufacturer"), "Maker");
    EXPECT_EQ(collected.Get(chassis, "SKU"), "SKU-1");
    EXPECT_EQ(collected.Get(chassis, "SerialNumber"), "SN-7");
    EXPECT_EQ(collected.Get(chassis, "Tag"), "Chassis");
    EXPECT_EQ(collected.Get(chassis, "Version"), "V2");
    EXPECT_EQ(collected.Get(chassis, "UserTracking"), "Asset 9");
    EXPECT_EQ(collected.Get(chassis, "LockPresent"), "true");
    EXPECT_EQ(collected.Get(chassis, "NumberOfPowerCords"), "1");
    EXPECT_EQ(collected.Get(chassis, "ChassisTypes"), "{23}");
    EXPECT_EQ(collected.Get(chassis, "ChassisPackageType"), "1");
    EXPECT_EQ(collected.Get(chassis, "ChassisTypeDescription"), "Rack Mount Chassis");
    EXPECT_EQ(collected.Get(chassis, "Height"), "3.5");
}

TEST(Chassis, LeavesOutPlaceholdersAndUnknownKinds) {
    TCollected collected;
    Collect(Table("| 3: 01 02 01 01 01 \"To be filled by O.E.M.\"\n"), collected);
    ASSERT_EQ(collected.CountInstances(chassis), 1U);
    for (const char* property : {"Manufacturer", "Version", "SerialNumber", "UserTracking", "LockPresent",
                                 "ChassisTypes", "ChassisPackageType", "Height"}) {
        EXPECT_EQ(collected.Get(chassis, property), "absent") << property;
    }
    EXPECT_EQ(collected.Get(chassis, "ElementName"), "Chassis");
}

TEST(Chassis, HasOnlyTheKindsThatTheSchemaHas) {
    TCollected collected;
    Collect(Table(OfKind("03") + OfKind("0a") + OfKind("18") + OfKind("19") + OfKind("1a") + OfKind("1c") +
                  OfKind("23")),
            collected);
    EXPECT_THAT(collected.GetAll(chassis, "ChassisTypes"),
                ElementsAre("{3}", "{10}", "{24}", "absent", "absent", "absent", "absent"));
    EXPECT_THAT(collected.GetAll(chassis, "ChassisPackageType"),
                ElementsAre("3", "10", "24", "1", "26", "1", "1"));
    EXPECT_THAT(collected.GetAll(chassis, "ChassisTypeDescription"),
                ElementsAre("Desktop", "Notebook", "Sealed-case PC", "Multi-system chassis", "Compact PCI",
                            "Blade", "Mini PC"));
}

TEST(Chassis, HasItsPlaceInTheTableInTheKeyIfThereAreSeveral) {
    TCollected collected;
    Collect(Table(OfKind("1d") + OfKind("1c")), collected);
    EXPECT_THAT(collected.GetAll(chassis, "Tag"), ElementsAre("Chassis@chassis 1", "Chassis@chassis 2"));
    EXPECT_THAT(collected.GetReport("chassis").notes,
                ElementsAre("2 enclosures share the key Chassis; their positions tell them apart"));
}

TEST(Chassis, FallsBackToTheKernelsExcerpt) {
    TCollected collected;
    Collect(
        "/sys/class/dmi/id/chassis_vendor = Maker\n"
        "/sys/class/dmi/id/chassis_type = 10\n"
        "/sys/class/dmi/id/chassis_version = V2\n"
        "/sys/class/dmi/id/chassis_asset_tag = No Asset Tag\n"
        "/sys/class/dmi/id/chassis_serial !denied\n",
        collected);
    ASSERT_EQ(collected.CountInstances(chassis), 1U);
    EXPECT_EQ(collected.Get(chassis, "Tag"), "Chassis");
    EXPECT_EQ(collected.Get(chassis, "ElementName"), "Maker Notebook");
    EXPECT_EQ(collected.Get(chassis, "ChassisPackageType"), "10");
    EXPECT_EQ(collected.Get(chassis, "Version"), "V2");
    EXPECT_EQ(collected.Get(chassis, "SerialNumber"), "absent");
}

TEST(Chassis, HasNoInstanceWithoutASource) {
    TCollected collected;
    Collect("/sys/class/dmi/id/sys_vendor = Maker\n", collected);
    EXPECT_EQ(collected.CountInstances(chassis), 0U);
}

}  // namespace
}  // namespace NVORHOST
