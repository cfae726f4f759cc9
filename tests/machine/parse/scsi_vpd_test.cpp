#include "machine/parse/scsi_vpd.h"

#include "tests/machine/system/machine_tree.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ParseVpdSerial, EndsAtTheLengthOfThePage) {
    EXPECT_EQ(ParseVpdSerial(ParseByteLine("00 80 00 08 \"  3JA0  \"")), "3JA0");
    EXPECT_EQ(ParseVpdSerial(ParseByteLine("00 80 00 04 \"3JA0 and more\"")), "3JA0");
}

TEST(ParseVpdSerial, ReturnsNulloptForOtherTruncatedAndEmptyPages) {
    EXPECT_EQ(ParseVpdSerial(ParseByteLine("00 83 00 04 \"3JA0\"")), std::nullopt);
    EXPECT_EQ(ParseVpdSerial(ParseByteLine("00 80 00 05 \"3JA0\"")), std::nullopt);
    EXPECT_EQ(ParseVpdSerial(ParseByteLine("00 80 00 04 \"    \"")), std::nullopt);
    EXPECT_EQ(ParseVpdSerial(ParseByteLine("00 80 00")), std::nullopt);
    EXPECT_EQ(ParseVpdSerial(""), std::nullopt);
}

// A vendor-specific designator, then the T10 designator with model and serial number.
std::string MakeAtaPage() {
    return ParseByteLine(
        "00 83 00 5c"
        " 02 00 00 10 \"S1ATA0001       \""
        " 02 01 00 44 \"ATA     SAMPLE SM500 SSD                        S1ATA0001           \"");
}

TEST(ParseVpdDesignators, ReturnsTypeCodeSetAndBytesOfEach) {
    const std::string body = ParseByteLine("01 03 00 08 50 00 c5 00 a1 b2 c3 d4 02 00 00 04 \"ABCD\"");
    const auto designators = ParseVpdDesignators(body);
    ASSERT_EQ(designators.size(), 2U);
    EXPECT_TRUE(designators[0].isBinary);
    EXPECT_EQ(designators[0].type, 3);
    EXPECT_EQ(designators[0].offset, 4U);
    EXPECT_EQ(designators[0].bytes, ParseByteLine("50 00 c5 00 a1 b2 c3 d4"));
    EXPECT_FALSE(designators[1].isBinary);
    EXPECT_EQ(designators[1].type, vendorSpecificDesignator);
    EXPECT_EQ(designators[1].offset, 16U);
    EXPECT_EQ(designators[1].bytes, "ABCD");
}

TEST(ParseVpdDesignators, EndsAtATruncatedDesignator) {
    EXPECT_EQ(ParseVpdDesignators(ParseByteLine("02 00 00 01 \"A\" 02 00 00 04 \"ABC\"")).size(), 1U);
    EXPECT_EQ(ParseVpdDesignators(ParseByteLine("02 00 00 01 \"A\" 02 00 00")).size(), 1U);
    EXPECT_TRUE(ParseVpdDesignators("").empty());
}

TEST(ParseVpdAtaModel, FindsTheModelAfterOtherDesignators) {
    EXPECT_EQ(ParseVpdAtaModel(MakeAtaPage()), "SAMPLE SM500 SSD");
}

TEST(ParseVpdAtaModel, ReturnsNulloptForEveryTruncatedPage) {
    const std::string page = MakeAtaPage();
    for (std::size_t length = 0; length < page.size(); ++length) {
        EXPECT_EQ(ParseVpdAtaModel(page.substr(0, length)), std::nullopt) << length;
    }
}

TEST(ParseVpdAtaModel, ReturnsNulloptForOtherVendorsAndShortDesignators) {
    EXPECT_EQ(ParseVpdAtaModel(ParseByteLine("00 83 00 10 02 01 00 0c \"SEAGATE ST36\"")), std::nullopt);
    EXPECT_EQ(ParseVpdAtaModel(ParseByteLine("00 83 00 10 02 01 00 0c \"ATA     ST36\"")), std::nullopt);
    EXPECT_EQ(ParseVpdAtaModel(ParseByteLine("00 83 00 04 02 01 00 44")), std::nullopt);
}

// Page B1h with that rate, and a body of the length that disks have.
std::string MakeRotationPage(int high, int low) {
    std::string page("\x00\xB1\x00\x3C", 4);
    page += static_cast<char>(high);
    page += static_cast<char>(low);
    page.append(58, '\0');
    return page;
}

TEST(ParseVpdRotation, ReadsTheRateOfARotatingMedium) {
    const auto rotation = ParseVpdRotation(MakeRotationPage(0x1C, 0x20));
    ASSERT_TRUE(rotation);
    EXPECT_FALSE(rotation->isSolidState);
    EXPECT_EQ(rotation->rotationsPerMinute, 7200U);
}

TEST(ParseVpdRotation, RecognisesASolidStateMedium) {
    const auto rotation = ParseVpdRotation(MakeRotationPage(0, 1));
    ASSERT_TRUE(rotation);
    EXPECT_TRUE(rotation->isSolidState);
    EXPECT_FALSE(rotation->rotationsPerMinute);
}

TEST(ParseVpdRotation, ReturnsNulloptForUnreportedAndReservedRates) {
    EXPECT_FALSE(ParseVpdRotation(MakeRotationPage(0, 0)));
    EXPECT_FALSE(ParseVpdRotation(MakeRotationPage(0, 2)));
    EXPECT_FALSE(ParseVpdRotation(MakeRotationPage(4, 0)));
    EXPECT_FALSE(ParseVpdRotation(MakeRotationPage(0xFF, 0xFF)));
}

TEST(ParseVpdRotation, ReturnsNulloptForAnotherOrATruncatedPage) {
    EXPECT_FALSE(ParseVpdRotation(""));
    EXPECT_FALSE(ParseVpdRotation(std::string("\x00\xB0\x00\x02\x1C\x20", 6)));
    EXPECT_FALSE(ParseVpdRotation(std::string("\x00\xB1\x00\x01\x1C", 5)));
    EXPECT_FALSE(ParseVpdRotation(MakeRotationPage(0x1C, 0x20).substr(0, 63)));
}

}  // namespace
}  // namespace NVORHOST
