#include "machine/collect/memory/spd_source.h"

#include "tests/machine/system/machine_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The EEPROM of a DDR3 module.
std::string Eeprom(const std::string& path, const std::string& serial) {
    return path + "/eeprom registers 256:\n| 02: 0b\n| 78: 19 42 " + serial + "\n";
}

std::vector<std::string> ReadSerials(const std::string& tree) {
    std::vector<std::string> serials;
    for (const TSpdModule& module : ReadSpdModules(ParseMachineTree(tree).files)) {
        serials.push_back(module.serial.value_or("absent"));
    }
    return serials;
}

TEST(ReadSpdModules, ReadsTheDevicesOfEveryDriver) {
    EXPECT_THAT(ReadSerials(Eeprom("/sys/bus/i2c/drivers/at24/0-0051", "00 00 00 03") +
                            Eeprom("/sys/bus/i2c/drivers/at24/0-0050", "00 00 00 02") +
                            Eeprom("/sys/bus/i2c/drivers/ee1004/1-0050", "00 00 00 01") +
                            Eeprom("/sys/bus/i2c/drivers/other/2-0050", "00 00 00 04")),
                ElementsAre("00000001", "00000002", "00000003"));
}

TEST(ReadSpdModules, IgnoresTheAttributesOfTheDriver) {
    EXPECT_THAT(ReadSerials(Eeprom("/sys/bus/i2c/drivers/at24/module", "00 00 00 01") +
                            "/sys/bus/i2c/drivers/at24/uevent = \n"),
                IsEmpty());
}

TEST(ReadSpdModules, ReadsOnlyTheAddressesOfModules) {
    std::string tree;
    for (const char* address : {"004f", "0050", "0057", "0058", "0150", "050", "10050"}) {
        tree += Eeprom(std::string("/sys/bus/i2c/drivers/at24/0-") + address, "00 00 00 01");
    }
    EXPECT_EQ(ReadSerials(tree).size(), 2U);
}

TEST(ReadSpdModules, SkipsUnreadableAndMalformedEeproms) {
    EXPECT_THAT(ReadSerials("/sys/bus/i2c/drivers/at24/0-0050/eeprom !denied\n"
                            "/sys/bus/i2c/drivers/at24/0-0051/eeprom registers 64:\n| 02: 0b\n"
                            "/sys/bus/i2c/drivers/at24/0-0052/eeprom registers 256:\n| 02: 77\n"
                            "/sys/bus/i2c/drivers/at24/0-0053/\n" +
                            Eeprom("/sys/bus/i2c/drivers/at24/0-0054", "00 00 00 05")),
                ElementsAre("00000005"));
}

TEST(ReadSpdModules, ReturnsNothingWithoutTheDrivers) {
    EXPECT_THAT(ReadSerials(""), IsEmpty());
}

std::vector<int> Match(const std::vector<TModuleTexts>& modules, const std::vector<TSpdModule>& eeproms) {
    std::vector<int> places;
    for (const TSpdModule* match : MatchSpdModules(modules, eeproms)) {
        places.push_back(match == nullptr ? -1 : static_cast<int>(match - eeproms.data()));
    }
    return places;
}

TEST(MatchSpdModules, TakesSerialNumbersInEitherOrderOfBytesAndAnyCase) {
    const std::vector<TSpdModule> eeproms{{"1A2B3C4D", std::nullopt, std::nullopt}};
    EXPECT_THAT(Match({{"1a2b3c4d", std::nullopt}}, eeproms), ElementsAre(0));
    EXPECT_THAT(Match({{"4D3C2B1A", std::nullopt}}, eeproms), ElementsAre(0));
    EXPECT_THAT(Match({{"A1B2C3D4", std::nullopt}}, eeproms), ElementsAre(-1));
    EXPECT_THAT(Match({{"1A2B3C4", std::nullopt}}, eeproms), ElementsAre(-1));
    EXPECT_THAT(Match({{"", std::nullopt}}, eeproms), ElementsAre(-1));
}

TEST(MatchSpdModules, RejectsTheSerialNumberOfAnotherPart) {
    const std::vector<TSpdModule> eeproms{{"1A2B3C4D", "PART-1", std::nullopt}};
    EXPECT_THAT(Match({{"1A2B3C4D", "PART-2"}}, eeproms), ElementsAre(-1));
    EXPECT_THAT(Match({{"1A2B3C4D", "PART-1  "}}, eeproms), ElementsAre(0));
}

TEST(MatchSpdModules, ReturnsNoModuleIfSeveralMatch) {
    const std::vector<TSpdModule> twins{{"1A2B3C4D", "PART", std::nullopt},
                                        {"1A2B3C4D", "PART", std::nullopt}};
    EXPECT_THAT(Match({{"1A2B3C4D", "PART"}}, twins), ElementsAre(-1));
    const std::vector<TSpdModule> one{{"1A2B3C4D", "PART", std::nullopt}};
    EXPECT_THAT(Match({{"1A2B3C4D", "PART"}, {"1A2B3C4D", "PART"}}, one), ElementsAre(-1, -1));
    EXPECT_THAT(Match({{std::nullopt, "PART"}, {std::nullopt, "PART"}}, one), ElementsAre(-1, -1));
}

TEST(MatchSpdModules, UsesThePartNumberOnlyWithoutASerialNumber) {
    const std::vector<TSpdModule> eeproms{{"1A2B3C4D", "PART", std::nullopt}};
    EXPECT_THAT(Match({{"99999999", "PART"}}, eeproms), ElementsAre(-1));
    EXPECT_THAT(Match({{std::nullopt, "PART"}}, eeproms), ElementsAre(0));
    EXPECT_THAT(Match({{std::nullopt, std::nullopt}}, eeproms), ElementsAre(-1));
}

}  // namespace
}  // namespace NVORHOST
