// Baseboard structures: each later field by the structure's own length.
#include "machine/parse/smbios_system.h"
#include "tests/machine/parse/structure_bytes.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

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

TEST(ParseSmbiosBoard, HasEachFieldFromTheLengthThatHoldsIt) {
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

}  // namespace
}  // namespace NVORHOST
