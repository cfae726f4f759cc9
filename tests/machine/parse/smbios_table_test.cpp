#include "machine/parse/smbios_table.h"

#include "tests/machine/system/machine_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

std::string MakeTable() {
    return MakeSmbiosStructure("1: 01 02 00 00 \"Maker\" \"Product\"", 0x0100) +
           MakeSmbiosStructure("32: 00 00 00", 0x0101) +
           MakeSmbiosStructure("2: 01 00 00 00 \"Board\"", 0x0102) + MakeSmbiosStructure("127:", 0x0103);
}

TEST(ParseSmbiosTable, ReturnsEveryStructureBeforeTheEndOfTable) {
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

TEST(ParseSmbiosTable, IgnoresStructuresAfterTheEndOfTable) {
    const std::string table = MakeTable() + MakeSmbiosStructure("1: 01 \"Phantom\"", 0x0200);
    EXPECT_EQ(ParseSmbiosTable(table).size(), 3U);
}

TEST(ParseSmbiosTable, AcceptsATableWithoutAnEndOfTableStructure) {
    const std::string table = MakeSmbiosStructure("1: 01 \"Maker\"", 1);
    EXPECT_EQ(ParseSmbiosTable(table).size(), 1U);
}

std::vector<int> TypesOf(const std::string& table) {
    std::vector<int> types;
    for (const TSmbiosStructure& structure : ParseSmbiosTable(table)) {
        types.push_back(structure.GetType());
    }
    return types;
}

const std::string board = MakeSmbiosStructure("2: 01 02 00 00 \"Maker\" \"Board\"", 0x0102);
const std::string end = MakeSmbiosStructure("127:", 0x0103);

TEST(ParseSmbiosTable, ContinuesAfterALengthBelowTheHeaderSize) {
    const std::string table =
        MakeSmbiosStructure("1: 01 \"Maker\"", 1) + "\x02\x03\x00\x01\x00\x00"s + board + end;
    EXPECT_THAT(TypesOf(table), ElementsAre(1, 2));
}

TEST(ParseSmbiosTable, ContinuesAfterAFormattedAreaPastTheEnd) {
    const std::string table =
        MakeSmbiosStructure("1: 01 \"Maker\"", 1) + "\x02\xFF\x00\x01\x00\x00"s + board + end;
    EXPECT_THAT(TypesOf(table), ElementsAre(1, 2));
}

TEST(ParseSmbiosTable, StopsIfNoStructureFollowsAMalformedOne) {
    const std::string table = MakeSmbiosStructure("1: 01 \"Maker\"", 1) + "\x02\xFF\x00\x01\x00\x00"s;
    EXPECT_THAT(TypesOf(table), ElementsAre(1));
    // All three are malformed: the first has a reserved type, the second is too short for its type, and no
    // structure follows the third.
    EXPECT_THAT(TypesOf(table + "\x50\x04\x00\x01\x00\x00"s + end), ElementsAre(1));
    EXPECT_THAT(TypesOf(table + "\x11\x14\x00\x01\x00\x00"s + end), ElementsAre(1));
    EXPECT_THAT(TypesOf(table + "\x0B\x05\x00\x01\x01\x01\x00\x00\x01\x02\x03"s), ElementsAre(1));
}

// The bytes between the header of the first structure and the second structure.
std::string TableWithTexts(const std::string& texts) {
    return "\x01\x08\x00\x01\x01\x02\x03\x00"s + texts + board + end;
}

TEST(ParseSmbiosTable, ContinuesAfterAnEmptyTextInAStringSet) {
    for (const std::string& texts :
         {"Maker\0\0Serial\0\0"s, "Maker\0\0Serial\0Family\0\0"s, "Maker\0\0Serial\0\0Family\0\0"s,
          "Maker\0\0-1.2/3 and a long text that could be a structure of type 45\0\0"s, "Maker\0\0S\0\0"s,
          "\0Product\0\0"s, "\0Product\0Serial\0\0"s, "Maker\0\0\0"s, "Maker\0\0\0Serial\0\0"s, "\0\0\0"s}) {
        EXPECT_THAT(TypesOf(TableWithTexts(texts)), ElementsAre(1, 2)) << texts;
    }
}

TEST(ParseSmbiosTable, KeepsTheTextsBeforeAnEmptyOne) {
    const std::string table = TableWithTexts("Maker\0\0Serial\0\0"s);
    const auto structures = ParseSmbiosTable(table);
    ASSERT_EQ(structures.size(), 2U);
    EXPECT_EQ(structures[0].GetText(0x04), "Maker");
    EXPECT_EQ(structures[0].GetText(0x05), std::nullopt);
    EXPECT_EQ(structures[0].GetText(0x06), std::nullopt);
    EXPECT_EQ(structures[1].GetText(0x05), "Board");
}

TEST(ParseSmbiosTable, KeepsAFirmwareStructureAfterOthers) {
    const std::string firmware = MakeSmbiosStructure(
        "0: 01 02 00 e0 03 0f 80 98 8b 3f 01 00 00 00 03 0d 02 04 ff ff \"Vendor\" \"1.0\"", 0x0000);
    EXPECT_THAT(TypesOf(board + firmware + board + end), ElementsAre(2, 0, 2));
    EXPECT_EQ(FindSmbiosTableFlaw(board + firmware + board + end), std::nullopt);
}

// Ten structures with texts; each text is emptied in turn, and only texts of that structure may be lost.
TEST(ParseSmbiosTable, KeepsEveryStructureWhenAnyOneTextIsEmpty) {
    const std::string names[] = {"1", "A1", "-x.y", " pad ", "Maker", "0123", "/CN12/", "(R) CPU 3.00GHz",
                                 "~", "B2"};
    const std::size_t count = std::size(names);
    for (std::size_t emptied = 0; emptied < 3 * count; ++emptied) {
        std::string table;
        for (std::size_t i = 0; i < count; ++i) {
            const auto text = [&](std::size_t part) {
                return "\"" + (3 * i + part == emptied ? "" : names[(i + part) % count]) + "\" ";
            };
            table += MakeSmbiosStructure(
                "17: 05 01 fe ff 40 00 40 00 00 20 09 00 01 02 18 80 00 " + text(0) + text(1) + text(2),
                static_cast<std::uint16_t>(0x1100 + i));
        }
        EXPECT_EQ(TypesOf(table + board + end).size(), count + 1) << emptied;
        EXPECT_NE(FindSmbiosTableFlaw(table + board + end), std::nullopt) << emptied;
    }
}

// Every prefix gives the structures that are entirely within it, unchanged, and no other.
TEST(ParseSmbiosTable, ReturnsNoExtraStructuresForATruncatedTable) {
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

TEST(FindSmbiosTableFlaw, ReturnsNulloptForWellFormedTables) {
    EXPECT_EQ(FindSmbiosTableFlaw(""), std::nullopt);
    EXPECT_EQ(FindSmbiosTableFlaw(MakeTable()), std::nullopt);
    EXPECT_EQ(FindSmbiosTableFlaw(MakeTable() + "what follows the end"), std::nullopt);
    EXPECT_EQ(FindSmbiosTableFlaw(MakeSmbiosStructure("1: 01 00 00 00 \"Maker\"", 1)), std::nullopt);
}

TEST(FindSmbiosTableFlaw, DescribesTheFirstMalformedPlace) {
    const std::string sound = MakeSmbiosStructure("1: 01 00 00 00 \"Maker\"", 1);
    ASSERT_EQ(sound.size(), 15U);
    EXPECT_EQ(FindSmbiosTableFlaw(sound + "\x02\x03\x00\x01\x00\x00"s),
              "byte 15 of 21, after 1 structure: a structure is shorter than its header");
    EXPECT_EQ(FindSmbiosTableFlaw(sound + "\x02"s),
              "byte 15 of 16, after 1 structure: a structure is shorter than its header");
    EXPECT_EQ(FindSmbiosTableFlaw(sound + "\x02\xFF\x00\x01\x00\x00"s),
              "byte 15 of 21, after 1 structure: a structure is longer than the rest of the table");
    EXPECT_EQ(FindSmbiosTableFlaw(sound + "\x06\x04\x00\x01\x00"s),
              "byte 15 of 20, after 1 structure: the texts of a structure do not end within the table");
    EXPECT_EQ(FindSmbiosTableFlaw(sound + "\x06\x04\x00\x01"s + "text"),
              "byte 15 of 23, after 1 structure: the texts of a structure do not end within the table");
    EXPECT_EQ(FindSmbiosTableFlaw(TableWithTexts("Maker\0\0Serial\0\0"s)),
              "byte 15 of 50, after 1 structure: an empty text ends the texts of a structure early");
    EXPECT_EQ(
        FindSmbiosTableFlaw(TableWithTexts("Maker\0\0Serial\0\0Family\0\0"s)),
        "byte 15 of 58, after 1 structure: an empty text ends the texts of a structure early; 2 malformed "
        "places in all");
}

TEST(FindSmbiosTableFlaw, CountsStructuresWithoutTheMinimumLengthOfTheirType) {
    EXPECT_EQ(FindSmbiosTableFlaw(MakeSmbiosStructure("2: 01 02 00 \"Maker\"", 1) + board +
                                  MakeSmbiosStructure("17: 05 01", 2)),
              "2 structures shorter than the minimum length of the type");
    EXPECT_EQ(
        FindSmbiosTableFlaw(MakeSmbiosStructure("2: 01 02 00 \"Maker\"", 1) + "\x02"s),
        "byte 14 of 15, after 1 structure: a structure is shorter than its header; 1 structure shorter than "
        "the minimum length of the type");
}

TEST(TSmbiosStructure, ChecksTheMinimumLengthOfItsType) {
    struct TRow {
        int type;
        int length;
    };
    for (const TRow& row :
         {TRow{0, 0x12}, TRow{1, 0x08}, TRow{2, 0x08}, TRow{3, 0x09}, TRow{4, 0x1A}, TRow{9, 0x0C},
          TRow{16, 0x0F}, TRow{17, 0x15}, TRow{19, 0x0F}, TRow{20, 0x13}, TRow{32, 0x04}, TRow{221, 0x04}}) {
        const auto isComplete = [&](int length) {
            const std::string table{static_cast<char>(row.type), static_cast<char>(length)};
            const std::string whole = table + std::string(static_cast<std::size_t>(length), '\0');
            return ParseSmbiosTable(whole).at(0).HasMinimumLength();
        };
        EXPECT_TRUE(isComplete(row.length)) << row.type;
        if (row.length > 4) {
            EXPECT_FALSE(isComplete(row.length - 1)) << row.type;
        }
    }
}

TEST(TSmbiosStructure, HasNoTextForNumbersPastTheLast) {
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

TEST(ParseSmbiosEntryPoint, CorrectsVersionsWithDecimalDigits) {
    EXPECT_EQ(ParseSmbiosEntryPoint(Make2xEntryPoint("02 1f")), (TSmbiosVersion{2, 3}));
    EXPECT_EQ(ParseSmbiosEntryPoint(Make2xEntryPoint("02 21")), (TSmbiosVersion{2, 3}));
    EXPECT_EQ(ParseSmbiosEntryPoint(Make2xEntryPoint("02 33")), (TSmbiosVersion{2, 6}));
}

TEST(ParseSmbiosEntryPoint, ReturnsNulloptForTruncatedAndUnknownEntryPoints) {
    const std::string whole = Make2xEntryPoint("02 08");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(ParseSmbiosEntryPoint(whole.substr(0, length)), std::nullopt) << length;
    }
    EXPECT_EQ(ParseSmbiosEntryPoint("_XY_" + whole.substr(4)), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
