#include "machine/parse/spd_eeprom.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

using namespace std::string_literals;

struct TKindRow {
    const char* name;
    char kind;
    std::size_t size, yearOffset, serialOffset, partOffset, partSize;
};

class TSpdKindTest : public testing::TestWithParam<TKindRow> {
  protected:
    // Made in week 42 of 2019.
    static std::string MakeEeprom(const TKindRow& row) {
        std::string bytes(row.size, '\0');
        bytes[2] = row.kind;
        bytes.replace(row.yearOffset, 2, "\x19\x42");
        bytes.replace(row.serialOffset, 4, "\x1A\x2B\x3C\x4D");
        bytes.replace(row.partOffset, row.partSize, row.partSize, ' ');
        bytes.replace(row.partOffset, 8, "PART-123");
        return bytes;
    }
};

INSTANTIATE_TEST_SUITE_P(Kind, TSpdKindTest,
                         testing::Values(TKindRow{"DDR", 0x07, 128, 93, 95, 73, 18},
                                         TKindRow{"DDR2", 0x08, 128, 93, 95, 73, 18},
                                         TKindRow{"FbDimm", 0x09, 176, 120, 122, 128, 18},
                                         TKindRow{"DDR3", 0x0B, 256, 120, 122, 128, 18},
                                         TKindRow{"DDR4", 0x0C, 512, 323, 325, 329, 20},
                                         TKindRow{"DDR4E", 0x0E, 512, 323, 325, 329, 20},
                                         TKindRow{"LPDDR3", 0x0F, 512, 323, 325, 329, 20},
                                         TKindRow{"LPDDR4", 0x10, 512, 323, 325, 329, 20},
                                         TKindRow{"LPDDR4X", 0x11, 512, 323, 325, 329, 20},
                                         TKindRow{"DDR5", 0x12, 1024, 515, 517, 521, 30},
                                         TKindRow{"LPDDR5", 0x13, 1024, 515, 517, 521, 30},
                                         TKindRow{"LPDDR5X", 0x15, 1024, 515, 517, 521, 30}),
                         [](const auto& row) { return row.param.name; });

TEST_P(TSpdKindTest, ReadsEveryFieldAtTheOffsetsOfItsKind) {
    const auto module = ParseSpdEeprom(MakeEeprom(GetParam()));
    ASSERT_TRUE(module);
    EXPECT_EQ(module->serial, "1A2B3C4D");
    EXPECT_EQ(module->part, "PART-123");
    EXPECT_EQ(module->made, (TManufactureWeek{2019, 42}));
}

TEST_P(TSpdKindTest, ReturnsNulloptForEveryTruncatedEeprom) {
    const TKindRow& row = GetParam();
    const std::string bytes = MakeEeprom(row);
    const std::size_t end = std::max(row.partOffset + row.partSize, row.serialOffset + 4);
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
        EXPECT_EQ(ParseSpdEeprom(bytes.substr(0, length)).has_value(), length >= end) << length;
    }
}

class TDdr3Test : public TSpdKindTest {
  protected:
    static std::optional<TSpdModule> ParseWith(std::size_t offset, const std::string& replacement) {
        std::string bytes = MakeEeprom({"DDR3", 0x0B, 256, 120, 122, 128, 18});
        bytes.replace(offset, replacement.size(), replacement);
        return ParseSpdEeprom(bytes);
    }
};

TEST_F(TDdr3Test, ReturnsNulloptForUnlistedKindsOfMemory) {
    EXPECT_EQ(ParseWith(2, "\x00"s).has_value(), false);
    EXPECT_EQ(ParseWith(2, "\x04"s).has_value(), false);
    EXPECT_EQ(ParseWith(2, "\xFF"s).has_value(), false);
}

TEST_F(TDdr3Test, HasNoSerialNumberInErasedBytes) {
    EXPECT_EQ(ParseWith(122, std::string(4, '\0'))->serial, std::nullopt);
    EXPECT_EQ(ParseWith(122, std::string(4, '\xFF'))->serial, std::nullopt);
    EXPECT_EQ(ParseWith(122, "\0\0\0\x01"s)->serial, "00000001");
}

TEST_F(TDdr3Test, EndsThePartNumberAtItsPadding) {
    EXPECT_EQ(ParseWith(128, "ABC"s + std::string(15, '\0'))->part, "ABC");
    EXPECT_EQ(ParseWith(128, "EIGHTEEN-LETTERS-X")->part, "EIGHTEEN-LETTERS-X");
    EXPECT_EQ(ParseWith(128, std::string(18, '\0'))->part, std::nullopt);
    EXPECT_EQ(ParseWith(128, std::string(18, ' '))->part, std::nullopt);
    EXPECT_EQ(ParseWith(128, std::string(18, '\xFF'))->part, std::nullopt);
    EXPECT_EQ(ParseWith(128, "AB\x01"s)->part, std::nullopt);
}

TEST_F(TDdr3Test, HasNoWeekForMalformedDigits) {
    EXPECT_EQ(ParseWith(120, "\x00\x01"s)->made, (TManufactureWeek{2000, 1}));
    EXPECT_EQ(ParseWith(120, "\x99\x53"s)->made, (TManufactureWeek{2099, 53}));
    EXPECT_EQ(ParseWith(120, "\x19\x00"s)->made, std::nullopt);
    EXPECT_EQ(ParseWith(120, "\x19\x54"s)->made, std::nullopt);
    EXPECT_EQ(ParseWith(120, "\x1A\x10"s)->made, std::nullopt);
    EXPECT_EQ(ParseWith(120, "\x19\x1A"s)->made, std::nullopt);
    EXPECT_EQ(ParseWith(120, "\xA0\x10"s)->made, std::nullopt);
    EXPECT_EQ(ParseWith(120, "\x19\xA1"s)->made, std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
