#include "machine/parse/smbios_system.h"

#include "tests/machine/parse/structure_bytes.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

constexpr TSmbiosVersion oldVersion{2, 5};
constexpr TSmbiosVersion newVersion{2, 6};

TEST(ParseSmbiosSystem, ReadsEveryField) {
    const TStructureBytes structure(
        "1: 01 02 03 04 44 45 4c 4c 42 00 10 35 80 54 b9 c0 4f 50 32 31 06 00 00"
        " \"Maker\" \"Product\" \"Version\" \"Serial\"");
    const auto system = ParseSmbiosSystem(structure.Get(), newVersion);
    EXPECT_EQ(system.manufacturer, "Maker");
    EXPECT_EQ(system.product, "Product");
    EXPECT_EQ(system.version, "Version");
    EXPECT_EQ(system.serial, "Serial");
    EXPECT_EQ(system.uuid, "4C4C4544-0042-3510-8054-B9C04F503231");
}

TEST(ParseSmbiosSystem, HasNoUuidInStructuresOfVersion20) {
    const TStructureBytes structure("1: 01 02 03 04 \"Maker\" \"Product\" \"Version\" \"Serial\"");
    const auto system = ParseSmbiosSystem(structure.Get(), newVersion);
    EXPECT_EQ(system.serial, "Serial");
    EXPECT_EQ(system.uuid, std::nullopt);
}

TEST(ParseSmbiosSystem, HasNoUuidIfTheVersionIsUnknown) {
    const TStructureBytes structure(
        "1: 01 02 00 00 44 45 4c 4c 42 00 10 35 80 54 b9 c0 4f 50 32 31 06 00 00 \"Maker\" \"Product\"");
    const auto system = ParseSmbiosSystem(structure.Get(), std::nullopt);
    EXPECT_EQ(system.product, "Product");
    EXPECT_EQ(system.uuid, std::nullopt);
}

TEST(ParseSmbiosFirmware, ReadsTheVirtualMachineFlagFromTheSecondExtensionByte) {
    const auto isVirtual = [](const std::string& extensionBytes) {
        const TStructureBytes structure("0: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 " + extensionBytes);
        return ParseSmbiosFirmware(structure.Get()).isVirtualMachine;
    };
    EXPECT_TRUE(isVirtual("00 10"));
    EXPECT_TRUE(isVirtual("03 1d 00 00 ff ff"));
    EXPECT_FALSE(isVirtual("10 0d"));
    EXPECT_FALSE(isVirtual("10"));
    EXPECT_FALSE(isVirtual(""));
}

TEST(FormatSmbiosUuid, KeepsTheStoredByteOrderBeforeVersion26) {
    const std::string bytes = ParseByteLine("44 45 4c 4c 42 00 10 35 80 54 b9 c0 4f 50 32 31");
    EXPECT_EQ(FormatSmbiosUuid(bytes, oldVersion), "44454C4C-4200-1035-8054-B9C04F503231");
    EXPECT_EQ(FormatSmbiosUuid(bytes, newVersion), "4C4C4544-0042-3510-8054-B9C04F503231");
}

TEST(FormatSmbiosUuid, ReturnsNulloptForPlaceholdersAndOtherSizes) {
    EXPECT_EQ(FormatSmbiosUuid(std::string(16, '\0'), newVersion), std::nullopt);
    EXPECT_EQ(FormatSmbiosUuid(std::string(16, '\xFF'), newVersion), std::nullopt);
    EXPECT_EQ(FormatSmbiosUuid(ParseByteLine("00 02 00 03 00 04 00 05 00 06 00 07 00 08 00 09"), newVersion),
              std::nullopt);
    EXPECT_EQ(FormatSmbiosUuid(std::string(15, 'a'), newVersion), std::nullopt);
}

TEST(IsPlaceholderUuid, IgnoresCase) {
    EXPECT_TRUE(IsPlaceholderUuid("ffffffff-ffff-ffff-ffff-ffffffffffff"));
    EXPECT_FALSE(IsPlaceholderUuid("4c4c4544-0042-3510-8054-b9c04f503231"));
    EXPECT_FALSE(IsPlaceholderUuid(""));
}

constexpr const char* wholeBoard =
    "2: 01 02 03 04 05 09 06 00 03 0a 00 \"Maker\" \"Board\" \"A01\" \"SN-1\" \"Asset\" \"Bay 1\"";

TEST(ParseSmbiosBoard, ReadsEveryField) {
    const TStructureBytes structure(wholeBoard);
    const auto board = ParseSmbiosBoard(structure.Get());
    EXPECT_EQ(board.manufacturer, "Maker");
    EXPECT_EQ(board.product, "Board");
    EXPECT_EQ(board.version, "A01");
    EXPECT_EQ(board.serial, "SN-1");
    EXPECT_EQ(board.assetTag, "Asset");
    EXPECT_EQ(board.features, 0x09);
    EXPECT_EQ(board.location, "Bay 1");
    EXPECT_EQ(board.kind, 0x0A);
}

TEST(ParseSmbiosBoard, HasAFieldIfItsLengthIncludesIt) {
    constexpr TFieldEnd<TSmbiosBoard> fields[] = {
        {"manufacturer", 0x05, [](const TSmbiosBoard& board) { return board.manufacturer.has_value(); }},
        {"product", 0x06, [](const TSmbiosBoard& board) { return board.product.has_value(); }},
        {"version", 0x07, [](const TSmbiosBoard& board) { return board.version.has_value(); }},
        {"serial", 0x08, [](const TSmbiosBoard& board) { return board.serial.has_value(); }},
        {"assetTag", 0x09, [](const TSmbiosBoard& board) { return board.assetTag.has_value(); }},
        {"features", 0x0A, [](const TSmbiosBoard& board) { return board.features.has_value(); }},
        {"location", 0x0B, [](const TSmbiosBoard& board) { return board.location.has_value(); }},
        {"kind", 0x0E, [](const TSmbiosBoard& board) { return board.kind.has_value(); }},
    };
    const TStructureBytes whole(wholeBoard);
    for (std::size_t length = 4; length <= whole.GetLength(); ++length) {
        const auto shortened = whole.Shortened(length);
        const auto board = ParseSmbiosBoard(shortened.Get());
        for (const auto& field : fields) {
            EXPECT_EQ(field.isFound(board), length >= field.end) << field.name << " at length " << length;
        }
    }
}

TEST(ParseSmbiosChassis, ReadsStatesAndIgnoresTheLockBit) {
    const TStructureBytes structure("3: 00 97 00 01 00 03 04 05 \"Serial\"");
    const auto chassis = ParseSmbiosChassis(structure.Get());
    EXPECT_EQ(chassis.kind, 0x17);
    EXPECT_EQ(chassis.serial, "Serial");
    EXPECT_EQ(chassis.bootUpState, 3);
    EXPECT_EQ(chassis.powerState, 4);
    EXPECT_EQ(chassis.thermalState, 5);
}

TEST(FindChassisKindName, ReturnsTheNameOfTheReference) {
    EXPECT_EQ(FindChassisKindName(0x03), "Desktop");
    EXPECT_EQ(FindChassisKindName(0x17), "Rack Mount Chassis");
    EXPECT_EQ(FindChassisKindName(0x24), "Stick PC");
}

TEST(FindChassisKindName, ReturnsNulloptForOtherUnknownAndUnlistedCodes) {
    EXPECT_EQ(FindChassisKindName(0x01), std::nullopt);
    EXPECT_EQ(FindChassisKindName(0x02), std::nullopt);
    EXPECT_EQ(FindChassisKindName(0x70), std::nullopt);
}

TEST(ParseSmbiosChassis, HasNoStatesInStructuresOfVersion20) {
    const TStructureBytes structure("3: 00 07 00 00 00");
    const auto chassis = ParseSmbiosChassis(structure.Get());
    EXPECT_EQ(chassis.kind, 7);
    EXPECT_EQ(chassis.bootUpState, std::nullopt);
}

TEST(ParseSmbiosFirmware, ReadsEveryField) {
    const TStructureBytes structure(
        "0: 01 02 00 f0 03 ff 00 00 00 00 00 00 00 00 03 0d 05 11 01 0c \"Maker\" \"F.42\" \"03/15/2021\"");
    const auto firmware = ParseSmbiosFirmware(structure.Get());
    EXPECT_EQ(firmware.vendor, "Maker");
    EXPECT_EQ(firmware.version, "F.42");
    EXPECT_EQ(firmware.releaseDate, "03/15/2021");
    EXPECT_EQ(firmware.release, "5.17");
    EXPECT_EQ(firmware.controllerRelease, "1.12");
    EXPECT_FALSE(firmware.isVirtualMachine);
}

TEST(ParseSmbiosFirmware, HasNoReleasesOfTheValueFFhAndInOlderStructures) {
    const auto parse = [](const std::string& rest) {
        const TStructureBytes structure("0: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 " + rest);
        return ParseSmbiosFirmware(structure.Get());
    };
    EXPECT_EQ(parse("ff ff ff ff").release, std::nullopt);
    EXPECT_EQ(parse("00 00 ff 00").release, "0.0");
    EXPECT_EQ(parse("00 00 ff 00").controllerRelease, std::nullopt);
    EXPECT_EQ(parse("05").release, std::nullopt);
    EXPECT_EQ(parse("05 01 02").controllerRelease, std::nullopt);
}

TEST(ParseFirmwareDate, ReadsYearsOfTwoAndFourDigits) {
    EXPECT_EQ(ParseFirmwareDate("03/15/2021"), (TFirmwareDate{2021, 3, 15}));
    EXPECT_EQ(ParseFirmwareDate("02/29/2024"), (TFirmwareDate{2024, 2, 29}));
    EXPECT_EQ(ParseFirmwareDate("12/31/98"), (TFirmwareDate{1998, 12, 31}));
}

TEST(ParseFirmwareDate, ReturnsNulloptForOtherFormsAndForDaysThatDoNotExist) {
    for (const char* text : {"", "2021-03-15", "3/15/2021", "03/15/202", "03-15-2021", "03/15/20x1",
                             "13/01/2021", "02/29/2023", "00/00/2021", "01/01/05", "03/15/2021 "}) {
        EXPECT_EQ(ParseFirmwareDate(text), std::nullopt) << text;
    }
}

TEST(ParseSmbiosChassis, ReadsEveryFieldPastItsContainedElements) {
    const TStructureBytes structure(
        "3: 01 97 02 03 04 03 03 03 03 00 00 00 00 02 01 02 03 aa bb cc dd ee ff 05 "
        "\"Maker\" \"V2\" \"Serial\" \"Asset\" \"SKU-1\"");
    const auto chassis = ParseSmbiosChassis(structure.Get());
    EXPECT_EQ(chassis.manufacturer, "Maker");
    EXPECT_EQ(chassis.kind, 0x17);
    EXPECT_TRUE(chassis.hasLock);
    EXPECT_EQ(chassis.version, "V2");
    EXPECT_EQ(chassis.serial, "Serial");
    EXPECT_EQ(chassis.assetTag, "Asset");
    EXPECT_EQ(chassis.rackUnits, 2);
    EXPECT_EQ(chassis.powerCords, 1);
    EXPECT_EQ(chassis.sku, "SKU-1");
}

TEST(ParseSmbiosChassis, HasNoHeightPowerCordsAndSkuForZero) {
    const TStructureBytes structure("3: 01 17 00 00 00 03 03 03 03 00 00 00 00 00 00 00 00 00 \"Maker\"");
    const auto chassis = ParseSmbiosChassis(structure.Get());
    EXPECT_FALSE(chassis.hasLock);
    EXPECT_EQ(chassis.rackUnits, std::nullopt);
    EXPECT_EQ(chassis.powerCords, std::nullopt);
    EXPECT_EQ(chassis.sku, std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
