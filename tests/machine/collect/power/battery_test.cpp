#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* battery = "CIM_Battery";

std::string Attribute(const std::string& supply, const std::string& line) {
    return "/sys/class/power_supply/" + supply + "/" + line + "\n";
}

TEST(Batteries, HaveEveryPropertyOfSysfs) {
    TCollected collected;
    std::string tree;
    for (const char* line :
         {"type = Battery", "present = 1", "manufacturer = Maker", "model_name = BT-57",
          "serial_number = 00421", "technology = Li-poly", "cycle_count = 117",
          "voltage_min_design = 11520000", "energy_full_design = 57020000", "energy_full = 51330000"}) {
        tree += Attribute("BAT0", line);
    }
    Collect(tree, collected);
    ASSERT_EQ(collected.CountInstances(battery), 1U);
    EXPECT_EQ(collected.Get(battery, "ElementName"), "Maker BT-57");
    EXPECT_EQ(collected.Get(battery, "Description"), "Battery");
    EXPECT_EQ(collected.Get(battery, "DeviceID"), "00421");
    EXPECT_EQ(collected.Get(battery, "OtherIdentifyingInfo"), "{Maker, BT-57, 00421}");
    EXPECT_EQ(collected.Get(battery, "IdentifyingDescriptions"), "{Manufacturer, Model, Serial number}");
    EXPECT_EQ(collected.Get(battery, "Chemistry"), "8");
    EXPECT_EQ(collected.Get(battery, "DesignCapacity"), "57020");
    EXPECT_EQ(collected.Get(battery, "FullChargeCapacity"), "51330");
    EXPECT_EQ(collected.Get(battery, "DesignVoltage"), "11520");
    EXPECT_EQ(collected.Get(battery, "RechargeCount"), "117");
}

TEST(Batteries, ConvertAmpereHoursByTheDesignVoltage) {
    TCollected collected;
    Collect(Attribute("BAT1", "type = Battery") + Attribute("BAT1", "voltage_min_design = 7600000") +
                Attribute("BAT1", "charge_full_design = 5000000") +
                Attribute("BAT1", "charge_full = 4500000") + Attribute("BAT2", "type = Battery") +
                Attribute("BAT2", "charge_full = 4500000"),
            collected);
    EXPECT_THAT(collected.GetAll(battery, "DeviceID"), ElementsAre("BAT1", "BAT2"));
    EXPECT_THAT(collected.GetAll(battery, "DesignCapacity"), ElementsAre("38000", "absent"));
    EXPECT_THAT(collected.GetAll(battery, "FullChargeCapacity"), ElementsAre("34200", "absent"));
}

TEST(Batteries, LeaveOutAdaptersEmptyBaysAndBatteriesOfPeripherals) {
    TCollected collected;
    Collect(Attribute("AC", "type = Mains") + Attribute("BAT0", "type = Battery") +
                Attribute("BAT0", "present = 0") + Attribute("hidpp_battery_0", "type = Battery") +
                Attribute("hidpp_battery_0", "scope = Device"),
            collected);
    EXPECT_EQ(collected.CountInstances(battery), 0U);
}

TEST(Batteries, LeaveOutPlaceholdersAndCountsOfZero) {
    TCollected collected;
    Collect(Attribute("BAT0", "type = Battery") + Attribute("BAT0", "serial_number = 0000") +
                Attribute("BAT0", "technology = Unknown") + Attribute("BAT0", "cycle_count = 0") +
                Attribute("BAT0", "energy_full = 0"),
            collected);
    EXPECT_EQ(collected.Get(battery, "DeviceID"), "BAT0");
    EXPECT_EQ(collected.Get(battery, "ElementName"), "BAT0");
    for (const char* property : {"OtherIdentifyingInfo", "IdentifyingDescriptions", "Chemistry",
                                 "FullChargeCapacity", "RechargeCount"}) {
        EXPECT_EQ(collected.Get(battery, property), "absent") << property;
    }
}

TEST(Batteries, FallBackToTheTableOfTheFirmware) {
    TCollected collected;
    Collect(
        "/sys/firmware/dmi/tables/DMI smbios:\n"
        "| 22: 01 02 03 04 05 06 94 11 e8 2c 06 02 34 12 00 00 07 0a "
        "\"Rear\" \"Maker\" \"2020-02-01\" \"SN-1\" \"Primary\" \"1.1\" \"LION\"\n"
        "| 22: 01 00 00 00 00 02 00 00 00 00 00 02 00 00 00 00 00 00 \"Front\"\n",
        collected);
    EXPECT_THAT(collected.GetAll(battery, "DeviceID"), ElementsAre("SN-1", "Front"));
    EXPECT_THAT(collected.GetAll(battery, "ElementName"), ElementsAre("Maker Primary", "Front"));
    EXPECT_THAT(collected.GetAll(battery, "Chemistry"), ElementsAre("6", "absent"));
    EXPECT_THAT(collected.GetAll(battery, "DesignCapacity"), ElementsAre("45000", "absent"));
    EXPECT_THAT(collected.GetAll(battery, "DesignVoltage"), ElementsAre("11496", "absent"));
}

}  // namespace
}  // namespace NVORHOST
