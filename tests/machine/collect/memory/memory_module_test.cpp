// Memory modules of the firmware's table, joined with their mapped addresses and their own EEPROMs.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* module = "KELSG_SPDData";

std::string Table(const std::string& lines) {
    return "/sys/firmware/dmi/tables/DMI smbios:\n" + lines;
}

// The fields of a socket that tests vary, all of version 2.3.
struct TSocketFields {
    std::string locator = "DIMM_A1";
    std::string bank = "Bank 0";
    std::string serial = "1A2B3C4D";
    std::string part = "PART-123";
    std::string maker = "Maker";
    std::string widths = "48 00 40 00";
    std::string size = "00 20";
    std::string form = "09";
    std::string kind = "1a";
};

std::string Socket(const TSocketFields& fields = {}) {
    return "| 17: 00 10 fe ff " + fields.widths + " " + fields.size + " " + fields.form + " 00 01 02 " +
           fields.kind + " 80 20 6a 0a 03 04 00 05 \"" + fields.locator + "\" \"" + fields.bank + "\" \"" +
           fields.maker + "\" \"" + fields.serial + "\" \"" + fields.part + "\"\n";
}

// A mapped address of the first structure of a table, with row and interleave position.
std::string Mapped(const std::string& positions) {
    return "| 20: 00 00 00 00 ff ff 0f 00 00 01 00 00 " + positions + " 01\n";
}

TEST(MemoryModules, ReadEveryFieldOfAPopulatedSocket) {
    TCollected collected;
    Collect(Table(Socket() + Mapped("02 01")), collected);
    ASSERT_EQ(collected.CountInstances(module), 1U);
    EXPECT_EQ(collected.Get(module, "ElementName"), "Maker PART-123");
    EXPECT_EQ(collected.Get(module, "Description"), "Memory module, DDR4 DIMM");
    EXPECT_EQ(collected.Get(module, "Tag"), "DIMM_A1");
    EXPECT_EQ(collected.Get(module, "BankLabel"), "Bank 0");
    EXPECT_EQ(collected.Get(module, "Manufacturer"), "Maker");
    EXPECT_EQ(collected.Get(module, "SerialNumber"), "1A2B3C4D");
    EXPECT_EQ(collected.Get(module, "PartNumber"), "PART-123");
    EXPECT_EQ(collected.Get(module, "Capacity"), "8589934592");
    EXPECT_EQ(collected.Get(module, "Speed"), "2666");
    EXPECT_EQ(collected.Get(module, "TotalWidth"), "72");
    EXPECT_EQ(collected.Get(module, "DataWidth"), "64");
    EXPECT_EQ(collected.Get(module, "FormFactor"), "8");
    EXPECT_EQ(collected.Get(module, "MemoryType"), "26");
    EXPECT_EQ(collected.Get(module, "RemovalConditions"), "3");
    EXPECT_EQ(collected.Get(module, "PositionInRow"), "2");
    EXPECT_EQ(collected.Get(module, "InterleavePosition"), "1");
}

// An array with its error correction as digits, and a module of version 2.8 with its widths as digits. The
// array is the first structure, with handle 0100h.
std::string ArrayWithModule(const std::string& errorCorrection, const std::string& widths) {
    return Table("| 16: 03 03 " + errorCorrection + " 00 00 00 02 fe ff 04 00\n| 17: 00 01 fe ff " + widths +
                 " 00 04 09 00 01 02 1a 80 20 6a 0a 00 00 00 00 02 00 00 00 00 60 09 b0 04 78 05 e2 04"
                 " \"DIMM_A1\" \"Bank 0\"\n");
}

TEST(MemoryModules, HaveTheirConfiguredSpeedVoltageAndRank) {
    TCollected collected;
    Collect(ArrayWithModule("06", "48 00 40 00"), collected);
    EXPECT_EQ(collected.Get(module, "ConfiguredMemoryClockSpeed"), "2400");
    EXPECT_EQ(collected.Get(module, "ConfiguredVoltage"), "1250");
    EXPECT_EQ(collected.Get(module, "Rank"), "2");
    EXPECT_EQ(collected.Get(module, "ErrorMethodology"), "Multi-bit ECC");
}

TEST(MemoryModules, HaveTheErrorCorrectionOfTheirArrayOnlyWithCheckBits) {
    const auto find = [](const std::string& errorCorrection, const std::string& widths) {
        TCollected collected;
        Collect(ArrayWithModule(errorCorrection, widths), collected);
        return collected.Get(module, "ErrorMethodology");
    };
    EXPECT_EQ(find("05", "48 00 40 00"), "Single-bit ECC");
    EXPECT_EQ(find("05", "40 00 40 00"), "absent");
    EXPECT_EQ(find("05", "ff ff 40 00"), "absent");
    EXPECT_EQ(find("05", "48 00 ff ff"), "absent");
    EXPECT_EQ(find("03", "40 00 40 00"), "None");
    EXPECT_EQ(find("02", "48 00 40 00"), "absent");
}

TEST(MemoryModules, AreAbsentInEmptySockets) {
    TCollected collected;
    Collect(Table(Socket({.size = "00 00"}) + Socket({.locator = "DIMM_B1"})), collected);
    EXPECT_THAT(collected.GetAll(module, "Tag"), ElementsAre("DIMM_B1"));
}

TEST(MemoryModules, AreListedWithAnUnknownSize) {
    TCollected collected;
    Collect(Table(Socket({.size = "ff ff"})), collected);
    EXPECT_EQ(collected.Get(module, "Tag"), "DIMM_A1");
    EXPECT_EQ(collected.Get(module, "Capacity"), "absent");
}

TEST(MemoryModules, HaveNoWidthsThatAreUnknownOrBothZero) {
    const auto widths = [](const std::string& digits) {
        TCollected collected;
        Collect(Table(Socket({.widths = digits})), collected);
        return collected.Get(module, "TotalWidth") + " " + collected.Get(module, "DataWidth");
    };
    EXPECT_EQ(widths("ff ff ff ff"), "absent absent");
    EXPECT_EQ(widths("00 00 00 00"), "absent absent");
    EXPECT_EQ(widths("08 00 00 00"), "8 0");  // check bits alone
    EXPECT_EQ(widths("40 00 40 00"), "64 64");
}

TEST(MemoryModules, HaveAPositionIfAllTheirPiecesAgree) {
    const auto positions = [](const std::string& mapped) {
        TCollected collected;
        Collect(Table(Socket() + mapped), collected);
        return collected.Get(module, "PositionInRow") + " " + collected.Get(module, "InterleavePosition");
    };
    EXPECT_EQ(positions(""), "absent absent");
    EXPECT_EQ(positions(Mapped("01 00")), "1 0");
    EXPECT_EQ(positions(Mapped("01 02") + Mapped("01 02")), "1 2");
    EXPECT_EQ(positions(Mapped("01 02") + Mapped("01 01")), "1 absent");
    EXPECT_EQ(positions(Mapped("01 02") + Mapped("02 02")), "absent 2");
    EXPECT_EQ(positions(Mapped("01 02") + Mapped("ff ff")), "absent absent");
    EXPECT_EQ(positions("| 20: 00 00 00 00 ff ff 0f 00 99 99 00 00 01 01 01\n"), "absent absent");
}

TEST(MemoryModules, AreNamedByMakerAndPartNumber) {
    const auto name = [](const TSocketFields& fields) {
        TCollected collected;
        Collect(Table(Socket(fields)), collected);
        return collected.Get(module, "ElementName");
    };
    EXPECT_EQ(name({}), "Maker PART-123");
    EXPECT_EQ(name({.maker = "00CE00B300CE"}), "PART-123");
    EXPECT_EQ(name({.maker = "Unknown"}), "PART-123");
    EXPECT_EQ(name({.part = "Not Specified"}), "DIMM_A1");
}

TEST(MemoryModules, HaveTheirBanksInTheKeyIfLocatorsAreEqual) {
    TCollected collected;
    Collect(Table(Socket({.locator = "DIMM 0", .bank = "CHANNEL A"}) + Socket({.locator = "DIMM 1"}) +
                  Socket({.locator = "DIMM 0", .bank = "CHANNEL B"})),
            collected);
    EXPECT_THAT(collected.GetAll(module, "Tag"),
                ElementsAre("DIMM 0@CHANNEL A", "DIMM 1", "DIMM 0@CHANNEL B"));
    EXPECT_THAT(collected.GetReport("memory").notes,
                ElementsAre("2 memory sockets share the key DIMM 0; their positions tell them apart"));
}

TEST(MemoryModules, HaveTheirPlacesInTheKeyIfLocatorAndBankAreEqual) {
    TCollected collected;
    Collect(Table(Socket({.locator = "Board"}) + Socket({.locator = "Board"}) +
                  Socket({.locator = "", .bank = ""})),
            collected);
    EXPECT_THAT(collected.GetAll(module, "Tag"),
                ElementsAre("Board@memory device 1", "Board@memory device 2", "memory device 3"));
}

TEST(MemoryModules, KeepTheirKeysWhenOtherSocketsAreEmptied) {
    TCollected collected;
    Collect(Table(Socket({.locator = "DIMM 0", .bank = "CHANNEL A", .size = "00 00"}) +
                  Socket({.locator = "DIMM 0", .bank = "CHANNEL B"})),
            collected);
    EXPECT_THAT(collected.GetAll(module, "Tag"), ElementsAre("DIMM 0@CHANNEL B"));
}

// Every prefix of a table gives the first modules of the whole one, and no other.
TEST(MemoryModules, AreTheIntactOnesOfATruncatedTable) {
    const std::string first = MakeSmbiosStructure(Socket().substr(2, Socket().size() - 3), 0x0100);
    const std::string second =
        MakeSmbiosStructure(Socket({.locator = "DIMM_B1"}).substr(2, Socket().size() - 3), 0x0101);
    const std::string table = first + second;
    for (std::size_t length = 0; length <= table.size(); ++length) {
        TMachine machine;
        machine.files.AddFile("/sys/firmware/dmi/tables/DMI", table.substr(0, length));
        TCollected collected;
        Collect(machine.files, machine.calls, collected);
        const std::size_t held = length < first.size() ? 0U : length < table.size() ? 1U : 2U;
        EXPECT_EQ(collected.CountInstances(module), held) << length;
    }
}

// The EEPROM of a DDR3 module that was made in week 42 of 2019.
std::string Eeprom(const std::string& path, const std::string& serial, const std::string& part) {
    return path + "/eeprom registers 256:\n| 02: 0b\n| 78: 19 42 " + serial + "\n| 80: \"" + part + "\"\n";
}

constexpr const char* firstEeprom = "/sys/bus/i2c/drivers/at24/0-0050";
constexpr const char* secondEeprom = "/sys/bus/i2c/drivers/at24/0-0051";

TEST(MemoryModules, AreJoinedWithTheEepromOfTheirSerialNumber) {
    TCollected collected;
    Collect(Table(Socket({.serial = "1A2B3C4D", .part = "Unknown"}) +
                  Socket({.locator = "DIMM_B1", .serial = "5E6F7A8B"})) +
                Eeprom(firstEeprom, "1a 2b 3c 4d", "FROM-EEPROM") +
                Eeprom(secondEeprom, "99 99 99 99", "PART-123"),
            collected);
    EXPECT_THAT(collected.GetAll(module, "PartNumber"), ElementsAre("FROM-EEPROM", "PART-123"));
    EXPECT_THAT(collected.GetAll(module, "Description"),
                ElementsAre("Memory module, DDR4 DIMM, made in week 42 of 2019", "Memory module, DDR4 DIMM"));
}

TEST(MemoryModules, TakeTheSerialNumberOfTheEepromWithTheirPartNumber) {
    TCollected collected;
    Collect(Table(Socket({.serial = "00000000", .part = "PART-1"}) +
                  Socket({.locator = "DIMM_B1", .serial = "00000000", .part = "PART-2"}) +
                  Socket({.locator = "DIMM_C1", .serial = "00000000", .part = "PART-2"})) +
                Eeprom(firstEeprom, "1a 2b 3c 4d", "part-1") + Eeprom(secondEeprom, "5e 6f 7a 8b", "PART-2"),
            collected);
    EXPECT_THAT(collected.GetAll(module, "SerialNumber"), ElementsAre("1A2B3C4D", "absent", "absent"));
}

TEST(MemoryModules, IgnoreTheDriversOwnFiles) {
    TCollected collected;
    Collect(Table(Socket()) + Eeprom("/sys/bus/i2c/drivers/at24/module", "1a 2b 3c 4d", "PART-123"),
            collected);
    EXPECT_EQ(collected.Get(module, "Description"), "Memory module, DDR4 DIMM");
}

TEST(MemoryModules, ReadNoEepromWithoutASocket) {
    TCollected collected;
    Collect(std::string(firstEeprom) + "/eeprom !denied\n", collected);
    EXPECT_THAT(collected.GetReport("memory").deniedSources, testing::IsEmpty());
}

TEST(MemoryModules, AreDescribedByTheirKind) {
    const auto describe = [](const std::string& kind, const std::string& form) {
        TCollected collected;
        Collect(Table(Socket({.form = form, .kind = kind})), collected);
        return collected.Get(module, "Description");
    };
    EXPECT_EQ(describe("1a", "09"), "Memory module, DDR4 DIMM");
    EXPECT_EQ(describe("14", "0f"), "Memory module, DDR2 FB-DIMM");
    EXPECT_EQ(describe("02", "09"), "Memory module, DIMM");
    EXPECT_EQ(describe("22", "02"), "Memory module, DDR5");
    EXPECT_EQ(describe("02", "02"), "Memory module");
    EXPECT_EQ(describe("77", "77"), "Memory module");
}

}  // namespace
}  // namespace NVORHOST
