#include "machine/parse/edid.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace NVORHOST {
namespace {

// A base block that can be changed byte by byte; its checksum is computed last.
class TEdidBytes {
  public:
    TEdidBytes() : bytes_(128, '\0') {
        Put(0x00, std::string_view("\x00\xFF\xFF\xFF\xFF\xFF\xFF\x00", 8));
        Put(0x08, "\x10\xAC");                       // DEL
        Put(0x0A, "\x34\x12");                       // product 1234h
        Put(0x0C, "\x78\x56\x34\x12");               // serial number 12345678h
        Put(0x10, "\x1D\x1F");                       // week 29 of 2021
        Put(0x12, "\x01\x04");                       // EDID 1.4
        Put(0x15, "\x3C\x22");                       // 60 cm by 34 cm
        Put(0x36, std::string_view("\x02\x3A", 2));  // a detailed timing: its pixel clock is not 0
        Put(0x36 + 12, "\x55\x50\x21");              // 597 mm by 336 mm
        PutText(0x48, 0xFC, "DELL U2720Q\n ");
        PutText(0x5A, 0xFF, "7XJ2K03\n     ");
    }

    TEdidBytes& Put(std::size_t offset, std::string_view bytes) {
        bytes_.replace(offset, bytes.size(), bytes);
        return *this;
    }
    TEdidBytes& PutText(std::size_t offset, std::uint8_t tag, std::string_view text) {
        return Put(offset, std::string("\0\0\0", 3) + static_cast<char>(tag) + '\0' + std::string(text));
    }
    std::string Get() const {
        std::string bytes = bytes_;
        unsigned sum = 0;
        for (const char byte : bytes) {
            sum += static_cast<std::uint8_t>(byte);
        }
        bytes.back() = static_cast<char>(256 - sum % 256);
        return bytes;
    }

  private:
    std::string bytes_;
};

TEST(ParseEdid, ReadsEveryField) {
    const auto edid = ParseEdid(TEdidBytes().Get());
    ASSERT_TRUE(edid);
    EXPECT_EQ(edid->maker, "DEL");
    EXPECT_EQ(edid->productCode, 0x1234);
    EXPECT_EQ(edid->serialNumber, 0x12345678U);
    EXPECT_EQ(edid->serialText, "7XJ2K03");
    EXPECT_EQ(edid->name, "DELL U2720Q");
    EXPECT_EQ(edid->year, 2021);
    EXPECT_EQ(edid->week, 29);
    EXPECT_FALSE(edid->isModelYear);
    EXPECT_EQ(edid->widthMillimetres, 597);
    EXPECT_EQ(edid->heightMillimetres, 336);
}

TEST(ParseEdid, IgnoresExtensionBlocks) {
    const auto edid = ParseEdid(TEdidBytes().Get() + std::string(128, '\x42'));
    ASSERT_TRUE(edid);
    EXPECT_EQ(edid->name, "DELL U2720Q");
}

TEST(ParseEdid, ReadsTheYearOfAModel) {
    const auto edid = ParseEdid(TEdidBytes().Put(0x10, "\xFF\x22").Get());
    ASSERT_TRUE(edid);
    EXPECT_TRUE(edid->isModelYear);
    EXPECT_EQ(edid->year, 2024);
    EXPECT_EQ(edid->week, std::nullopt);
}

TEST(ParseEdid, HasNoWeekForZeroAndAfter54) {
    EXPECT_EQ(ParseEdid(TEdidBytes().Put(0x10, std::string_view("\0", 1)).Get())->week, std::nullopt);
    EXPECT_EQ(ParseEdid(TEdidBytes().Put(0x10, "\x36").Get())->week, 54);
    EXPECT_EQ(ParseEdid(TEdidBytes().Put(0x10, "\x37").Get())->week, std::nullopt);
}

TEST(ParseEdid, HasNoYearAndNoSerialNumberForZero) {
    const auto edid = ParseEdid(
        TEdidBytes().Put(0x11, std::string_view("\0", 1)).Put(0x0C, std::string_view("\0\0\0\0", 4)).Get());
    ASSERT_TRUE(edid);
    EXPECT_EQ(edid->year, std::nullopt);
    EXPECT_EQ(edid->serialNumber, std::nullopt);
}

TEST(ParseEdid, FallsBackToTheSizeInCentimetres) {
    const auto edid = ParseEdid(TEdidBytes().Put(0x36 + 12, std::string_view("\0\0\0", 3)).Get());
    ASSERT_TRUE(edid);
    EXPECT_EQ(edid->widthMillimetres, 600);
    EXPECT_EQ(edid->heightMillimetres, 340);
}

TEST(ParseEdid, HasNoSizeForAnAspectRatio) {
    const auto edid = ParseEdid(TEdidBytes()
                                    .Put(0x15, std::string_view("\x4F\0", 2))
                                    .Put(0x36 + 12, std::string_view("\0\0\0", 3))
                                    .Get());
    ASSERT_TRUE(edid);
    EXPECT_EQ(edid->widthMillimetres, std::nullopt);
    EXPECT_EQ(edid->heightMillimetres, std::nullopt);
}

TEST(ParseEdid, ReadsATextThatFillsItsDescriptor) {
    const auto edid = ParseEdid(TEdidBytes().PutText(0x48, 0xFC, "ABCDEFGHIJKLM").Get());
    ASSERT_TRUE(edid);
    EXPECT_EQ(edid->name, "ABCDEFGHIJKLM");
}

TEST(ParseEdid, HasNoTextForAnEmptyDescriptor) {
    const auto edid = ParseEdid(TEdidBytes().PutText(0x5A, 0xFF, "\n            ").Get());
    ASSERT_TRUE(edid);
    EXPECT_EQ(edid->serialText, std::nullopt);
}

TEST(ParseEdid, RejectsAWrongChecksum) {
    std::string bytes = TEdidBytes().Get();
    bytes[0x48 + 6] ^= 1;
    EXPECT_FALSE(ParseEdid(bytes));
}

TEST(ParseEdid, RejectsAnotherHeader) {
    EXPECT_FALSE(ParseEdid(TEdidBytes().Put(0x00, "\x01").Get()));
}

TEST(ParseEdid, RejectsAMakerThatIsNotThreeLetters) {
    EXPECT_FALSE(ParseEdid(TEdidBytes().Put(0x08, std::string_view("\0\0", 2)).Get()));
    EXPECT_FALSE(ParseEdid(TEdidBytes().Put(0x08, "\x6C\x21").Get()));  // 27 is not a letter
}

TEST(ParseEdid, RejectsEveryPrefixOfABlock) {
    const std::string bytes = TEdidBytes().Get();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        EXPECT_FALSE(ParseEdid(std::string_view(bytes).substr(0, size))) << size;
    }
}

TEST(FindEdidSerials, FindsTheNumberAndTheTextRegardlessOfTheChecksum) {
    std::string bytes = TEdidBytes().Get();
    bytes.back() = static_cast<char>(bytes.back() + 1);
    const auto serials = FindEdidSerials(bytes);
    ASSERT_TRUE(serials);
    EXPECT_EQ(bytes.substr(serials->number.offset, serials->number.length), "\x78\x56\x34\x12");
    ASSERT_EQ(serials->texts.size(), 1U);
    EXPECT_EQ(bytes.substr(serials->texts[0].offset, serials->texts[0].length), "7XJ2K03");
}

TEST(FindEdidSerials, ReturnsNulloptForOtherBytes) {
    EXPECT_FALSE(FindEdidSerials(""));
    EXPECT_FALSE(FindEdidSerials(TEdidBytes().Get().substr(0, 127)));
    EXPECT_FALSE(FindEdidSerials(std::string(128, '\0')));
}

}  // namespace
}  // namespace NVORHOST
