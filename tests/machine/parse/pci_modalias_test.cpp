#include "machine/parse/pci_modalias.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr TPciNumbers desktopAdapter{0x8086, 0x100E, 0x8086, 0x001E, 0x02, 0x00, 0xAB};
constexpr const char* desktopAdapterText = "pci:v00008086d0000100Esv00008086sd0000001Ebc02sc00iab";

TEST(MakePciModalias, FormatsTheAttributeOfTheKernel) {
    EXPECT_EQ(MakePciModalias(desktopAdapter), desktopAdapterText);
}

TEST(ParsePciModalias, ReadsEveryNumber) {
    const auto numbers = ParsePciModalias(std::string(desktopAdapterText) + "\n");
    ASSERT_TRUE(numbers.has_value());
    EXPECT_EQ(numbers->vendorId, 0x8086);
    EXPECT_EQ(numbers->deviceId, 0x100E);
    EXPECT_EQ(numbers->subsystemVendorId, 0x8086);
    EXPECT_EQ(numbers->subsystemId, 0x001E);
    EXPECT_EQ(numbers->baseClass, 0x02);
    EXPECT_EQ(numbers->subclass, 0x00);
    EXPECT_EQ(numbers->programmingInterface, 0xAB);
}

TEST(ParsePciModalias, RejectsEveryTruncatedText) {
    const std::string text = desktopAdapterText;
    for (std::size_t length = 0; length < text.size(); ++length) {
        EXPECT_FALSE(ParsePciModalias(text.substr(0, length)).has_value()) << length;
    }
}

TEST(ParsePciModalias, RejectsOtherTexts) {
    EXPECT_FALSE(ParsePciModalias("usb:v1D6Bp0002d0601dc09dsc00dp01ic09isc00ip00in00").has_value());
    EXPECT_FALSE(ParsePciModalias(std::string(desktopAdapterText) + "0").has_value());
    // Device IDs have 16 bits.
    EXPECT_FALSE(ParsePciModalias("pci:v00008086d0001100Esv00008086sd0000001Ebc02sc00iab").has_value());
    EXPECT_FALSE(ParsePciModalias("pci:v00008086d-000100Esv00008086sd0000001Ebc02sc00iab").has_value());
}

}  // namespace
}  // namespace NVORHOST
