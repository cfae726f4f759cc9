// Fields of the system, board, chassis and processor structures, each by the structure's own length.
#include "machine/parse/smbios_processor.h"
#include "machine/parse/smbios_system.h"
#include "tests/machine/system/machine_tree.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

// Keeps the bytes that a structure is a view of.
class TStructure {
  public:
    explicit TStructure(std::string_view line) : bytes_(MakeSmbiosStructure(line, 1)) {}
    TSmbiosStructure Get() const { return ParseSmbiosTable(bytes_).at(0); }

  private:
    std::string bytes_;
};

constexpr TSmbiosVersion oldVersion{2, 5};
constexpr TSmbiosVersion newVersion{2, 6};

TEST(ParseSmbiosSystem, ReadsNamesAndIdentity) {
    const TStructure structure(
        "1: 01 02 03 04 44 45 4c 4c 42 00 10 35 80 54 b9 c0 4f 50 32 31 06 00 00"
        " \"Maker\" \"Product\" \"Version\" \"Serial\"");
    const auto system = ParseSmbiosSystem(structure.Get(), newVersion);
    EXPECT_EQ(system.manufacturer, "Maker");
    EXPECT_EQ(system.product, "Product");
    EXPECT_EQ(system.version, "Version");
    EXPECT_EQ(system.serial, "Serial");
    EXPECT_EQ(system.uuid, "4C4C4544-0042-3510-8054-B9C04F503231");
}

TEST(ParseSmbiosSystem, HasNoIdentityInStructuresOfTheFirstVersion) {
    const TStructure structure("1: 01 02 03 04 \"Maker\" \"Product\" \"Version\" \"Serial\"");
    const auto system = ParseSmbiosSystem(structure.Get(), newVersion);
    EXPECT_EQ(system.serial, "Serial");
    EXPECT_EQ(system.uuid, std::nullopt);
}

TEST(ParseSmbiosSystem, HasNoIdentityWithoutAVersion) {
    const TStructure structure(
        "1: 01 02 00 00 44 45 4c 4c 42 00 10 35 80 54 b9 c0 4f 50 32 31 06 00 00 \"Maker\" \"Product\"");
    const auto system = ParseSmbiosSystem(structure.Get(), std::nullopt);
    EXPECT_EQ(system.product, "Product");
    EXPECT_EQ(system.uuid, std::nullopt);
}

TEST(ParseSmbiosFirmware, KnowsAVirtualMachineByTheSecondExtensionByte) {
    const auto isVirtual = [](const std::string& extensionBytes) {
        const TStructure structure("0: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 " + extensionBytes);
        return ParseSmbiosFirmware(structure.Get()).isVirtualMachine;
    };
    EXPECT_TRUE(isVirtual("00 10"));
    EXPECT_TRUE(isVirtual("03 1d 00 00 ff ff"));
    EXPECT_FALSE(isVirtual("10 0d"));
    EXPECT_FALSE(isVirtual("10"));
    EXPECT_FALSE(isVirtual(""));
}

TEST(FormatSmbiosUuid, KeepsTheStoredOrderBeforeVersion26) {
    const std::string bytes = ParseByteLine("44 45 4c 4c 42 00 10 35 80 54 b9 c0 4f 50 32 31");
    EXPECT_EQ(FormatSmbiosUuid(bytes, oldVersion), "44454C4C-4200-1035-8054-B9C04F503231");
    EXPECT_EQ(FormatSmbiosUuid(bytes, newVersion), "4C4C4544-0042-3510-8054-B9C04F503231");
}

TEST(FormatSmbiosUuid, IsAbsentForPlaceholdersAndOtherSizes) {
    EXPECT_EQ(FormatSmbiosUuid(std::string(16, '\0'), newVersion), std::nullopt);
    EXPECT_EQ(FormatSmbiosUuid(std::string(16, '\xFF'), newVersion), std::nullopt);
    EXPECT_EQ(FormatSmbiosUuid(ParseByteLine("00 02 00 03 00 04 00 05 00 06 00 07 00 08 00 09"), newVersion),
              std::nullopt);
    EXPECT_EQ(FormatSmbiosUuid(std::string(15, 'a'), newVersion), std::nullopt);
}

TEST(IsPlaceholderUuid, ComparesWithoutRegardToCase) {
    EXPECT_TRUE(IsPlaceholderUuid("ffffffff-ffff-ffff-ffff-ffffffffffff"));
    EXPECT_FALSE(IsPlaceholderUuid("4c4c4544-0042-3510-8054-b9c04f503231"));
    EXPECT_FALSE(IsPlaceholderUuid(""));
}

TEST(ParseSmbiosBoard, ReadsNames) {
    const TStructure structure("2: 01 02 00 03 \"Maker\" \"Board\" \"Serial\"");
    const auto board = ParseSmbiosBoard(structure.Get());
    EXPECT_EQ(board.manufacturer, "Maker");
    EXPECT_EQ(board.product, "Board");
    EXPECT_EQ(board.serial, "Serial");
}

TEST(ParseSmbiosChassis, DropsTheLockBitAndReadsStates) {
    const TStructure structure("3: 00 97 00 01 00 03 04 05 \"Serial\"");
    const auto chassis = ParseSmbiosChassis(structure.Get());
    EXPECT_EQ(chassis.kind, 0x17);
    EXPECT_EQ(chassis.serial, "Serial");
    EXPECT_EQ(chassis.bootUpState, 3);
    EXPECT_EQ(chassis.powerState, 4);
    EXPECT_EQ(chassis.thermalState, 5);
    EXPECT_EQ(GetChassisKindName(0x17), "Rack Mount Chassis");
    EXPECT_EQ(GetChassisKindName(0x02), "");
    EXPECT_EQ(GetChassisKindName(0x70), "");
}

TEST(ParseSmbiosChassis, HasNoStatesInStructuresOfTheFirstVersion) {
    const TStructure structure("3: 00 07 00 00 00");
    const auto chassis = ParseSmbiosChassis(structure.Get());
    EXPECT_EQ(chassis.kind, 7);
    EXPECT_EQ(chassis.bootUpState, std::nullopt);
}

// Up to 28h, then whatever `rest` adds.
TStructure MakeProcessor(const std::string& family, const std::string& rest) {
    return TStructure(
        "4: 01 03 " + family +
        " 02 00 00 00 00 00 00 00 00 03 00 00 00 a0 0f e5 09 41 01 00 00 00 00 00 00 04 00 00 02"
        " 02 04 04 00 " +
        rest + " \"CPU 1\" \"Intel\" \"Model\" \"SN-1\"");
}

TEST(ParseSmbiosProcessor, ReadsASocket) {
    const TStructure structure = MakeProcessor("b3", "b3 00");
    const auto processor = ParseSmbiosProcessor(structure.Get());
    EXPECT_EQ(processor.socket, "CPU 1");
    EXPECT_TRUE(processor.IsCentral());
    EXPECT_EQ(processor.family, 0xB3);
    EXPECT_EQ(processor.manufacturer, "Intel");
    EXPECT_EQ(processor.version, "Model");
    EXPECT_EQ(processor.maxSpeedMHz, 4000);
    EXPECT_EQ(processor.currentSpeedMHz, 2533);
    EXPECT_TRUE(processor.IsPopulated());
    EXPECT_EQ(processor.serial, "SN-1");
    EXPECT_TRUE(processor.Is64BitCapable());
}

TEST(ParseSmbiosProcessor, TakesTheFamilyFromTheSecondFieldWhenTheFirstPointsThere) {
    EXPECT_EQ(ParseSmbiosProcessor(MakeProcessor("fe", "01 01").Get()).family, 0x101);
    EXPECT_EQ(ParseSmbiosProcessor(MakeProcessor("fe", "").Get()).family, std::nullopt);
    EXPECT_EQ(ParseSmbiosProcessor(MakeProcessor("fe", "00 00").Get()).family, std::nullopt);
    EXPECT_EQ(ParseSmbiosProcessor(MakeProcessor("00", "b3 00").Get()).family, std::nullopt);
    EXPECT_EQ(ParseSmbiosProcessor(MakeProcessor("ff", "b3 00").Get()).family, std::nullopt);
}

TEST(ParseSmbiosProcessor, LeavesUnknownSpeedsAndMissingFieldsAbsent) {
    const TStructure structure(
        "4: 01 03 b3 02 00 00 00 00 00 00 00 00 03 00 00 00 00 00 00 00 41 01 \"CPU 1\" \"Intel\" \"Model\"");
    const auto processor = ParseSmbiosProcessor(structure.Get());
    EXPECT_EQ(processor.maxSpeedMHz, std::nullopt);
    EXPECT_EQ(processor.currentSpeedMHz, std::nullopt);
    EXPECT_EQ(processor.serial, std::nullopt);
    EXPECT_EQ(processor.characteristics, std::nullopt);
    EXPECT_FALSE(processor.Is64BitCapable());
    EXPECT_FALSE(ParseSmbiosProcessor(TStructure("4: 00").Get()).IsPopulated());
}

}  // namespace
}  // namespace NVORHOST
