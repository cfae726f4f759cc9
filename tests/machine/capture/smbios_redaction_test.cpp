#include "machine/capture/smbios_redaction.h"

#include "machine/parse/smbios_memory.h"
#include "machine/parse/smbios_system.h"
#include "tests/machine/system/machine_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr TPseudonyms::TKey key{0x0123456789ABCDEFU, 0xFEDCBA9876543210U};
constexpr TSmbiosVersion version{2, 8};

std::string MakeTable() {
    TMachine machine = ParseMachineTree(
        "/DMI smbios:\n"
        "| 1: 01 02 00 03 102a5c9f 347b e911 8f9e2a86e4085a59 06 00 00 \"Example\" \"Server\" \"EX4200042\"\n"
        "| 2: 01 02 00 03 04 00 00 0000 0a 00 \"Example\" \"Board\" \"BOARD-77123\" \"ASSET-1\"\n"
        "| 11: 02 \"EX4200042\" \"password=hunter2\"\n"
        "| 221: 0102030405060708 \"52:54:00:b2:00:01\"\n");
    return machine.files.ReadText("/DMI").value;
}

std::string Redact(const std::string& table) {
    TIdentityTexts identities(key);
    LearnSmbios(table, version, identities);
    return RedactSmbios(table, version, identities);
}

TEST(SmbiosRedaction, ReplacesSerialNumbersAssetTagsAndTheUuidOnly) {
    const std::string table = MakeTable();
    const std::string redacted = Redact(table);
    const auto before = ParseSmbiosTable(table);
    const auto after = ParseSmbiosTable(redacted);
    ASSERT_EQ(after.size(), before.size());
    const TSmbiosSystem original = ParseSmbiosSystem(before[0], version);
    const TSmbiosSystem system = ParseSmbiosSystem(after[0], version);
    EXPECT_EQ(system.manufacturer, "Example");
    EXPECT_EQ(system.product, "Server");
    EXPECT_EQ(system.serial, TPseudonyms(key).Replace("EX4200042"));
    EXPECT_EQ(original.uuid, "9F5C2A10-7B34-11E9-8F9E-2A86E4085A59");
    EXPECT_EQ(system.uuid, TPseudonyms(key).Replace(*original.uuid));
    EXPECT_EQ(ParseSmbiosBoard(after[1]).product, "Board");
    EXPECT_EQ(after[1].GetText(7), TPseudonyms(key).Replace("BOARD-77123"));
    EXPECT_EQ(after[1].GetText(8), TPseudonyms(key).Replace("ASSET-1"));
}

TEST(SmbiosRedaction, WritesTheUuidInTheOrderOfTheTablesVersion) {
    const std::string table = MakeTable();
    TIdentityTexts identities(key);
    const TSmbiosVersion old{2, 4};
    const std::string redacted = RedactSmbios(table, old, identities);
    EXPECT_EQ(ParseSmbiosSystem(ParseSmbiosTable(redacted)[0], old).uuid,
              TPseudonyms(key).Replace("102A5C9F-347B-E911-8F9E-2A86E4085A59"));
}

TEST(SmbiosRedaction, OverwritesVendorSpecificStructures) {
    const std::string redacted = Redact(MakeTable());
    for (const char* secret : {"EX42", "hunter2", "52:54", "\x01\x02\x03\x04"}) {
        EXPECT_THAT(redacted, Not(HasSubstr(secret)));
    }
    EXPECT_EQ(redacted.size(), MakeTable().size());
    EXPECT_EQ(ParseSmbiosTable(redacted)[3].GetType(), 221);
}

TEST(SmbiosRedaction, ReplacesTheSerialNumberOfASmartBattery) {
    TMachine machine = ParseMachineTree(
        "/DMI smbios:\n"
        "| 22: 01 02 00 03 04 00 1027 102a 05 00 3412 2458 06 01 efbeadde \"Rear\" \"Example\" \"B7712\" "
        "\"Cell\" \"1.0\" \"LION\"\n");
    const std::string table = machine.files.ReadText("/DMI").value;
    const std::string redacted = Redact(table);
    EXPECT_EQ(ParseSmbiosTable(redacted)[0].GetText(7), TPseudonyms(key).Replace("B7712"));
    const std::string serial = ParseByteLine("3412");
    EXPECT_EQ(table.substr(0x10, 2), serial);
    EXPECT_EQ(redacted.substr(0x10, 2), TPseudonyms(key).ReplaceBytes(serial));
    EXPECT_EQ(redacted.substr(0x12, 4), table.substr(0x12, 4));
    EXPECT_EQ(redacted.substr(0x16, 4), "xxxx");
}

TEST(SmbiosRedaction, KeepsTheZeroOfABatteryWithoutASmartSerialNumber) {
    TMachine machine = ParseMachineTree(
        "/DMI smbios:\n| 22: 01 00 00 00 00 00 1027 102a 00 00 0000 2458 00 01 00000000 \"Rear\"\n");
    const std::string table = machine.files.ReadText("/DMI").value;
    EXPECT_EQ(Redact(table), table);
}

TEST(SmbiosRedaction, OverwritesInactiveStructures) {
    TMachine machine = ParseMachineTree(
        "/DMI smbios:\n| 126: 01 02 00 03 102a5c9f 347b e911 8f9e2a86e4085a59 06 \"Example\" "
        "\"EX4200042\"\n");
    const std::string redacted = Redact(machine.files.ReadText("/DMI").value);
    EXPECT_THAT(redacted, Not(HasSubstr("EX42")));
    EXPECT_THAT(redacted, Not(HasSubstr(ParseByteLine("102a5c9f"))));
    EXPECT_EQ(ParseSmbiosTable(redacted)[0].GetType(), 126);
}

TEST(SmbiosRedaction, KeepsPlaceholders) {
    TMachine machine = ParseMachineTree(
        "/DMI smbios:\n"
        "| 1: 01 02 00 03 00000000 0000 0000 0000000000000000 06 00 00 \"Example\" \"Server\" \"Not "
        "Specified\"\n");
    const std::string table = machine.files.ReadText("/DMI").value;
    EXPECT_EQ(Redact(table), table);
}

TEST(SmbiosRedaction, OverwritesTextsLeftOverAfterAnEmptyOne) {
    const std::string table =
        ParseByteLine("01 08 00 01 01 00 00 00 \"Example\" 00 00 \"EX4200042\" 00 \"SECRET-2\" 00 00") +
        ParseByteLine("02 08 00 02 01 02 00 00 \"Example\" 00 \"Board\" 00 00 \"BOARD-77123\" 00 00") +
        ParseByteLine("7f 04 00 03 00 00");
    const std::string redacted = Redact(table);
    for (const char* secret : {"EX42", "SECRET", "BOARD-77"}) {
        EXPECT_THAT(redacted, Not(HasSubstr(secret)));
    }
    const auto structures = ParseSmbiosTable(redacted);
    ASSERT_EQ(structures.size(), 2U);
    EXPECT_EQ(structures[1].GetText(5), "Board");
    EXPECT_EQ(FindSmbiosTableFlaw(redacted), FindSmbiosTableFlaw(table));
}

TEST(SmbiosRedaction, KeepsTheFlawsOfATableAtEveryLength) {
    const std::string table = MakeTable();
    for (std::size_t length = 0; length <= table.size(); ++length) {
        const std::string torn = table.substr(0, length);
        const std::string redacted = Redact(torn);
        EXPECT_EQ(redacted.size(), torn.size());
        EXPECT_EQ(ParseSmbiosTable(redacted).size(), ParseSmbiosTable(torn).size()) << length;
        EXPECT_THAT(redacted, Not(HasSubstr("EX42"))) << length;
        EXPECT_THAT(redacted, Not(HasSubstr("BOARD-7"))) << length;
    }
}

}  // namespace
}  // namespace NVORHOST
