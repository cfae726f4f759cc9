#include "machine/parse/smbios_power.h"

#include "tests/machine/parse/structure_bytes.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr const char* wholeBattery =
    "22: 01 02 03 04 05 06 94 11 e8 2c 06 02 34 12 00 00 07 0a "
    "\"Rear\" \"Maker\" \"2020-02-01\" \"SN-1\" \"Primary\" \"1.1\" \"LION\"";

constexpr const char* wholeSupply =
    "39: 01 01 02 03 04 05 06 07 ee 02 93 11 "
    "\"Bay 1\" \"PSU-1\" \"Maker\" \"SN-2\" \"Asset\" \"PN-750\" \"B\"";

TEST(ParseSmbiosBattery, ReadsEveryField) {
    const TStructureBytes structure(wholeBattery);
    const auto battery = ParseSmbiosBattery(structure.Get());
    EXPECT_EQ(battery.location, "Rear");
    EXPECT_EQ(battery.manufacturer, "Maker");
    EXPECT_EQ(battery.serial, "SN-1");
    EXPECT_EQ(battery.name, "Primary");
    EXPECT_EQ(battery.chemistry, 6);
    EXPECT_EQ(battery.designCapacityMilliwattHours, 45000U);
    EXPECT_EQ(battery.designVoltageMillivolts, 11496);
}

TEST(ParseSmbiosBattery, HasEachFieldFromTheLengthThatHoldsIt) {
    constexpr TFieldEnd<TSmbiosBattery> fields[] = {
        {"location", 0x05, [](const TSmbiosBattery& battery) { return battery.location.has_value(); }},
        {"manufacturer", 0x06,
         [](const TSmbiosBattery& battery) { return battery.manufacturer.has_value(); }},
        {"serial", 0x08, [](const TSmbiosBattery& battery) { return battery.serial.has_value(); }},
        {"name", 0x09, [](const TSmbiosBattery& battery) { return battery.name.has_value(); }},
        {"chemistry", 0x0A, [](const TSmbiosBattery& battery) { return battery.chemistry.has_value(); }},
        {"capacity", 0x0C,
         [](const TSmbiosBattery& battery) { return battery.designCapacityMilliwattHours.has_value(); }},
        {"voltage", 0x0E,
         [](const TSmbiosBattery& battery) { return battery.designVoltageMillivolts.has_value(); }},
    };
    const TStructureBytes whole(wholeBattery);
    for (std::size_t length = 4; length <= whole.GetLength(); ++length) {
        const auto shortened = whole.Shortened(length);
        const auto battery = ParseSmbiosBattery(shortened.Get());
        for (const auto& field : fields) {
            EXPECT_EQ(field.isFound(battery), length >= field.end) << field.name << " at length " << length;
        }
    }
}

TEST(ParseSmbiosBattery, FallsBackToTheNumberOfASmartBattery) {
    const TStructureBytes structure("22: 00 00 00 00 00 02 94 11 e8 2c 00 02 34 0a 00 00 00 0a");
    EXPECT_EQ(ParseSmbiosBattery(structure.Get()).serial, "0A34");
}

TEST(ParseSmbiosBattery, TakesACapacityWithoutMultiplierAsMilliwattHours) {
    const TStructureBytes whole(wholeBattery);
    EXPECT_EQ(ParseSmbiosBattery(whole.Shortened(0x15).Get()).designCapacityMilliwattHours, 4500U);
}

TEST(ParseSmbiosBattery, HasNoCapacityVoltageAndNumberForZero) {
    const TStructureBytes structure("22: 00 00 00 00 00 02 00 00 00 00 00 00 00 00 00 00 00 01");
    const auto battery = ParseSmbiosBattery(structure.Get());
    EXPECT_EQ(battery.designCapacityMilliwattHours, std::nullopt);
    EXPECT_EQ(battery.designVoltageMillivolts, std::nullopt);
    EXPECT_EQ(battery.serial, std::nullopt);
}

TEST(ParseSmbiosPowerSupply, ReadsEveryField) {
    const TStructureBytes structure(wholeSupply);
    const auto supply = ParseSmbiosPowerSupply(structure.Get());
    EXPECT_EQ(supply.location, "Bay 1");
    EXPECT_EQ(supply.name, "PSU-1");
    EXPECT_EQ(supply.manufacturer, "Maker");
    EXPECT_EQ(supply.serial, "SN-2");
    EXPECT_EQ(supply.assetTag, "Asset");
    EXPECT_EQ(supply.partNumber, "PN-750");
    EXPECT_EQ(supply.revision, "B");
    EXPECT_EQ(supply.maxPowerWatts, 750);
    EXPECT_EQ(supply.isHotReplaceable, true);
    EXPECT_EQ(supply.isPresent, true);
    EXPECT_EQ(supply.isUnplugged, false);
    EXPECT_EQ(supply.status, 3);
    EXPECT_EQ(supply.kind, 4);
}

TEST(ParseSmbiosPowerSupply, HasEachFieldFromTheLengthThatHoldsIt) {
    constexpr TFieldEnd<TSmbiosPowerSupply> fields[] = {
        {"location", 0x06, [](const TSmbiosPowerSupply& supply) { return supply.location.has_value(); }},
        {"name", 0x07, [](const TSmbiosPowerSupply& supply) { return supply.name.has_value(); }},
        {"manufacturer", 0x08,
         [](const TSmbiosPowerSupply& supply) { return supply.manufacturer.has_value(); }},
        {"serial", 0x09, [](const TSmbiosPowerSupply& supply) { return supply.serial.has_value(); }},
        {"assetTag", 0x0A, [](const TSmbiosPowerSupply& supply) { return supply.assetTag.has_value(); }},
        {"partNumber", 0x0B, [](const TSmbiosPowerSupply& supply) { return supply.partNumber.has_value(); }},
        {"revision", 0x0C, [](const TSmbiosPowerSupply& supply) { return supply.revision.has_value(); }},
        {"maxPowerWatts", 0x0E,
         [](const TSmbiosPowerSupply& supply) { return supply.maxPowerWatts.has_value(); }},
        {"isPresent", 0x10, [](const TSmbiosPowerSupply& supply) { return supply.isPresent.has_value(); }},
        {"status", 0x10, [](const TSmbiosPowerSupply& supply) { return supply.status.has_value(); }},
    };
    const TStructureBytes whole(wholeSupply);
    for (std::size_t length = 4; length <= whole.GetLength(); ++length) {
        const auto shortened = whole.Shortened(length);
        const auto supply = ParseSmbiosPowerSupply(shortened.Get());
        for (const auto& field : fields) {
            EXPECT_EQ(field.isFound(supply), length >= field.end) << field.name << " at length " << length;
        }
    }
}

TEST(ParseSmbiosPowerSupply, HasNoPowerForUnknown) {
    const TStructureBytes structure("39: 01 00 00 00 00 00 00 00 00 80 06 00");
    const auto supply = ParseSmbiosPowerSupply(structure.Get());
    EXPECT_EQ(supply.maxPowerWatts, std::nullopt);
    EXPECT_EQ(supply.isUnplugged, true);
    EXPECT_EQ(supply.isHotReplaceable, false);
}

}  // namespace
}  // namespace NVORHOST
