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

}  // namespace
}  // namespace NVORHOST
