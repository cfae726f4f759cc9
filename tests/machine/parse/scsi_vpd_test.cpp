#include "machine/parse/scsi_vpd.h"

#include "tests/machine/system/machine_tree.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ParseVpdSerial, ReadsAPageOfItsOwnLength) {
    EXPECT_EQ(ParseVpdSerial(ParseByteLine("00 80 00 08 \"  3JA0  \"")), "3JA0");
    EXPECT_EQ(ParseVpdSerial(ParseByteLine("00 80 00 04 \"3JA0 and more\"")), "3JA0");
}

TEST(ParseVpdSerial, IsAbsentForOtherTornAndEmptyPages) {
    EXPECT_EQ(ParseVpdSerial(ParseByteLine("00 83 00 04 \"3JA0\"")), std::nullopt);
    EXPECT_EQ(ParseVpdSerial(ParseByteLine("00 80 00 05 \"3JA0\"")), std::nullopt);
    EXPECT_EQ(ParseVpdSerial(ParseByteLine("00 80 00 04 \"    \"")), std::nullopt);
    EXPECT_EQ(ParseVpdSerial(ParseByteLine("00 80 00")), std::nullopt);
    EXPECT_EQ(ParseVpdSerial(""), std::nullopt);
}

// A vendor's designator, then the T10 one with model and serial number.
std::string MakeAtaPage() {
    return ParseByteLine(
        "00 83 00 5c"
        " 02 00 00 10 \"S1ATA0001       \""
        " 02 01 00 44 \"ATA     SAMPLE SM500 SSD                        S1ATA0001           \"");
}

TEST(ParseVpdAtaModel, FindsTheWholeModelBehindOtherDesignators) {
    EXPECT_EQ(ParseVpdAtaModel(MakeAtaPage()), "SAMPLE SM500 SSD");
}

TEST(ParseVpdAtaModel, IsAbsentForEveryTornPage) {
    const std::string page = MakeAtaPage();
    for (std::size_t length = 0; length < page.size(); ++length) {
        EXPECT_EQ(ParseVpdAtaModel(page.substr(0, length)), std::nullopt) << length;
    }
}

TEST(ParseVpdAtaModel, IsAbsentForOtherVendorsAndShortDesignators) {
    EXPECT_EQ(ParseVpdAtaModel(ParseByteLine("00 83 00 10 02 01 00 0c \"SEAGATE ST36\"")), std::nullopt);
    EXPECT_EQ(ParseVpdAtaModel(ParseByteLine("00 83 00 10 02 01 00 0c \"ATA     ST36\"")), std::nullopt);
    EXPECT_EQ(ParseVpdAtaModel(ParseByteLine("00 83 00 04 02 01 00 44")), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
