// The walk over an SMBIOS table, whole, torn and malformed.
#include "vorhost/parse/smbios_table.h"

#include "tests/system/machine_tree.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

using namespace std::string_literals;

std::string MakeTable() {
    return MakeSmbiosStructure("1: 01 02 00 00 \"Maker\" \"Product\"", 0x0100) +
           MakeSmbiosStructure("32: 00 00 00", 0x0101) + MakeSmbiosStructure("2: 01 \"Board\"", 0x0102) +
           MakeSmbiosStructure("127:", 0x0103);
}

TEST(ParseSmbiosTable, GivesEveryStructureBeforeTheEndOfTheTable) {
    const std::string table = MakeTable();
    const auto structures = ParseSmbiosTable(table);
    ASSERT_EQ(structures.size(), 3U);
    EXPECT_EQ(structures[0].GetType(), 1);
    EXPECT_EQ(structures[0].GetHandle(), 0x0100);
    EXPECT_EQ(structures[0].GetFields().GetSize(), 8U);
    EXPECT_EQ(structures[1].GetType(), 32);
    EXPECT_EQ(structures[2].GetType(), 2);
    EXPECT_EQ(structures[2].GetText(4), "Board");
}

TEST(ParseSmbiosTable, ReadsNothingBehindTheEndOfTable) {
    const std::string table = MakeTable() + MakeSmbiosStructure("1: 01 \"Phantom\"", 0x0200);
    EXPECT_EQ(ParseSmbiosTable(table).size(), 3U);
}

TEST(ParseSmbiosTable, DoesWithoutAnEndOfTableStructure) {
    const std::string table = MakeSmbiosStructure("1: 01 \"Maker\"", 1);
    EXPECT_EQ(ParseSmbiosTable(table).size(), 1U);
}

TEST(ParseSmbiosTable, StopsAtALengthThatHoldsNoHeader) {
    const std::string table = MakeSmbiosStructure("1: 01 \"Maker\"", 1) + "\x02\x03\x00\x01\x00\x00"s +
                              MakeSmbiosStructure("3: 01 \"Behind\"", 2);
    EXPECT_EQ(ParseSmbiosTable(table).size(), 1U);
}

TEST(ParseSmbiosTable, StopsAtAFormattedAreaThatRunsPastTheEnd) {
    const std::string table = MakeSmbiosStructure("1: 01 \"Maker\"", 1) + "\x02\xFF\x00\x01\x00\x00"s;
    EXPECT_EQ(ParseSmbiosTable(table).size(), 1U);
}

// Every prefix gives the structures that lie whole in it, unchanged, and no other.
TEST(ParseSmbiosTable, MakesNoPhantomFromATornTable) {
    const std::string table = MakeTable();
    const auto whole = ParseSmbiosTable(table);
    for (std::size_t length = 0; length <= table.size(); ++length) {
        const std::string prefix = table.substr(0, length);
        const auto structures = ParseSmbiosTable(prefix);
        ASSERT_LE(structures.size(), whole.size()) << length;
        for (std::size_t i = 0; i < structures.size(); ++i) {
            EXPECT_EQ(structures[i].GetFields().GetBytes(), whole[i].GetFields().GetBytes()) << length;
            EXPECT_EQ(structures[i].GetText(4), whole[i].GetText(4)) << length;
        }
    }
}

TEST(FindSmbiosTableFlaw, IsAbsentForSoundTables) {
    EXPECT_EQ(FindSmbiosTableFlaw(""), std::nullopt);
    EXPECT_EQ(FindSmbiosTableFlaw(MakeTable()), std::nullopt);
    EXPECT_EQ(FindSmbiosTableFlaw(MakeTable() + "what follows the end"), std::nullopt);
    EXPECT_EQ(FindSmbiosTableFlaw(MakeSmbiosStructure("1: 01 \"Maker\"", 1)), std::nullopt);
}

TEST(FindSmbiosTableFlaw, TellsWhereAndWhyReadingStopped) {
    const std::string sound = MakeSmbiosStructure("1: 01 \"Maker\"", 1);
    ASSERT_EQ(sound.size(), 12U);
    EXPECT_EQ(FindSmbiosTableFlaw(sound + "\x02\x03\x00\x01\x00\x00"s),
              "byte 12 of 18, behind 1 structures: a structure is shorter than its header");
    EXPECT_EQ(FindSmbiosTableFlaw(sound + "\x02"s),
              "byte 12 of 13, behind 1 structures: a structure is shorter than its header");
    EXPECT_EQ(FindSmbiosTableFlaw(sound + "\x02\xFF\x00\x01\x00\x00"s),
              "byte 12 of 18, behind 1 structures: a structure is longer than what is left of the table");
    EXPECT_EQ(FindSmbiosTableFlaw(sound + "\x02\x04\x00\x01\x00"s),
              "byte 12 of 17, behind 1 structures: the texts of a structure do not end within the table");
    EXPECT_EQ(FindSmbiosTableFlaw(sound + "\x02\x04\x00\x01"s + "text"),
              "byte 12 of 20, behind 1 structures: the texts of a structure do not end within the table");
}

TEST(TSmbiosStructure, HasNoTextForNumbersItDoesNotHold) {
    const std::string table = MakeSmbiosStructure("1: 01 02 03 00 FF \"Maker\" \"Product\"", 1) +
                              MakeSmbiosStructure("2: 01 \"Other\"", 2);
    const auto structures = ParseSmbiosTable(table);
    ASSERT_EQ(structures.size(), 2U);
    EXPECT_EQ(structures[0].GetText(0x04), "Maker");
    EXPECT_EQ(structures[0].GetText(0x05), "Product");
    EXPECT_EQ(structures[0].GetText(0x06), std::nullopt);  // past the last
    EXPECT_EQ(structures[0].GetText(0x07), std::nullopt);  // none
    EXPECT_EQ(structures[0].GetText(0x08), std::nullopt);
    EXPECT_EQ(structures[0].GetText(0x09), std::nullopt);  // past the structure
}

std::string Make2xEntryPoint(const std::string& version) {
    return ParseByteLine("\"_SM_\" de 1f " + version +
                         " 9b 00 00 00 00 00 00 00 \"_DMI_\" f6 b3 05 40 fa ff 3f 1a 00 28");
}

TEST(ParseSmbiosEntryPoint, ReadsTheVersionOfBothForms) {
    EXPECT_EQ(ParseSmbiosEntryPoint(Make2xEntryPoint("02 08")), (TSmbiosVersion{2, 8}));
    const std::string threeX =
        ParseByteLine("\"_SM3_\" 1b 18 03 02 00 01 00 6b 06 00 00 90 f9 ff 3f 00 00 00 00");
    EXPECT_EQ(ParseSmbiosEntryPoint(threeX), (TSmbiosVersion{3, 2}));
}

TEST(ParseSmbiosEntryPoint, CorrectsVersionsThatFirmwareGotWrong) {
    EXPECT_EQ(ParseSmbiosEntryPoint(Make2xEntryPoint("02 1f")), (TSmbiosVersion{2, 3}));
    EXPECT_EQ(ParseSmbiosEntryPoint(Make2xEntryPoint("02 21")), (TSmbiosVersion{2, 3}));
    EXPECT_EQ(ParseSmbiosEntryPoint(Make2xEntryPoint("02 33")), (TSmbiosVersion{2, 6}));
}

TEST(ParseSmbiosEntryPoint, IsAbsentForTornAndForeignBytes) {
    const std::string whole = Make2xEntryPoint("02 08");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(ParseSmbiosEntryPoint(whole.substr(0, length)), std::nullopt) << length;
    }
    EXPECT_EQ(ParseSmbiosEntryPoint("_XY_" + whole.substr(4)), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
