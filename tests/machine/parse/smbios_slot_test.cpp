#include "machine/parse/smbios_slot.h"

#include "tests/machine/parse/structure_bytes.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

// A slot of version 3.4 with one peer: designation, type, width, usage, length, ID, characteristics, address,
// base width, peer count, peer, information, physical width, pitch.
constexpr const char* wholeSlot =
    "9: 01 b6 0d 04 04 07 00 04 03 01 00 3b 0a 0d 01 01 00 3b 0a 08 00 0b 00 00 \"PCIe Slot 7\"";

TEST(ParseSmbiosSlot, ReadsEveryField) {
    const TStructureBytes structure(wholeSlot);
    const auto slot = ParseSmbiosSlot(structure.Get());
    EXPECT_EQ(slot.designation, "PCIe Slot 7");
    EXPECT_EQ(slot.kind, 0xB6);
    EXPECT_EQ(slot.dataWidth, 0x0D);
    EXPECT_EQ(slot.usage, 4);
    EXPECT_EQ(slot.number, 7);
    EXPECT_EQ(slot.supportsHotPlug, true);
    EXPECT_EQ(slot.pciAddress, "0001:3b:01.2");
    EXPECT_EQ(slot.physicalWidth, 0x0B);
}

TEST(ParseSmbiosSlot, HasAFieldIfItsLengthIncludesIt) {
    constexpr TFieldEnd<TSmbiosSlot> fields[] = {
        {"designation", 0x05, [](const TSmbiosSlot& slot) { return slot.designation.has_value(); }},
        {"kind", 0x06, [](const TSmbiosSlot& slot) { return slot.kind.has_value(); }},
        {"dataWidth", 0x07, [](const TSmbiosSlot& slot) { return slot.dataWidth.has_value(); }},
        {"usage", 0x08, [](const TSmbiosSlot& slot) { return slot.usage.has_value(); }},
        {"number", 0x0A, [](const TSmbiosSlot& slot) { return slot.number.has_value(); }},
        {"supportsHotPlug", 0x0D, [](const TSmbiosSlot& slot) { return slot.supportsHotPlug.has_value(); }},
        {"pciAddress", 0x11, [](const TSmbiosSlot& slot) { return slot.pciAddress.has_value(); }},
        {"physicalWidth", 0x1A, [](const TSmbiosSlot& slot) { return slot.physicalWidth.has_value(); }},
    };
    const TStructureBytes whole(wholeSlot);
    for (std::size_t length = 4; length <= whole.GetLength(); ++length) {
        const auto shortened = whole.Shortened(length);
        const auto slot = ParseSmbiosSlot(shortened.Get());
        for (const auto& field : fields) {
            EXPECT_EQ(field.isFound(slot), length >= field.end) << field.name << " at length " << length;
        }
    }
}

TEST(ParseSmbiosSlot, HasNoAddressForAllOnes) {
    const TStructureBytes structure("9: 00 06 05 03 04 01 00 04 01 ff ff ff ff");
    EXPECT_EQ(ParseSmbiosSlot(structure.Get()).pciAddress, std::nullopt);
}

TEST(ParseSmbiosSlot, HasAnAddressOfZeros) {
    const TStructureBytes structure("9: 00 06 05 03 04 01 00 04 01 00 00 00 00");
    EXPECT_EQ(ParseSmbiosSlot(structure.Get()).pciAddress, "0000:00:00.0");
}

TEST(ParseSmbiosSlot, LeavesHotPlugAbsentForUnknownCharacteristics) {
    const TStructureBytes unknown("9: 00 06 05 03 04 01 00 01 02");
    EXPECT_EQ(ParseSmbiosSlot(unknown.Get()).supportsHotPlug, std::nullopt);
    const TStructureBytes cold("9: 00 06 05 03 04 01 00 04 01");
    EXPECT_EQ(ParseSmbiosSlot(cold.Get()).supportsHotPlug, false);
}

TEST(ParseSmbiosSlot, ReadsThePhysicalWidthAfterAllPeers) {
    const TStructureBytes none("9: 00 b1 0d 04 04 01 00 04 01 00 00 00 00 0d 00 08 0b");
    EXPECT_EQ(ParseSmbiosSlot(none.Get()).physicalWidth, 0x0B);
    const TStructureBytes more("9: 00 b1 0d 04 04 01 00 04 01 00 00 00 00 0d ff 08 0b");
    EXPECT_EQ(ParseSmbiosSlot(more.Get()).physicalWidth, std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
