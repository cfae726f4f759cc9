#include "machine/parse/pci_link.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ParsePciLinkSpeed, ReadsEverySpeedInTheFormsOfOldAndNewKernels) {
    EXPECT_EQ(ParsePciLinkSpeed("2.5 GT/s PCIe"), 2500U);
    EXPECT_EQ(ParsePciLinkSpeed("2.5 GT/s"), 2500U);
    EXPECT_EQ(ParsePciLinkSpeed("5.0 GT/s PCIe"), 5000U);
    EXPECT_EQ(ParsePciLinkSpeed("5 GT/s"), 5000U);
    EXPECT_EQ(ParsePciLinkSpeed("8.0 GT/s PCIe"), 8000U);
    EXPECT_EQ(ParsePciLinkSpeed("8 GT/s"), 8000U);
    EXPECT_EQ(ParsePciLinkSpeed("16.0 GT/s PCIe"), 16'000U);
    EXPECT_EQ(ParsePciLinkSpeed("16 GT/s"), 16'000U);
    EXPECT_EQ(ParsePciLinkSpeed("32.0 GT/s PCIe"), 32'000U);
    EXPECT_EQ(ParsePciLinkSpeed("32 GT/s"), 32'000U);
    EXPECT_EQ(ParsePciLinkSpeed("64.0 GT/s PCIe"), 64'000U);
    EXPECT_EQ(ParsePciLinkSpeed("64 GT/s"), 64'000U);
}

TEST(ParsePciLinkSpeed, RejectsOtherTexts) {
    for (const char* text : {"", "Unknown", "Unknown speed", "8.0", "8.0 GT/s PCI-X", "7.0 GT/s PCIe",
                             "-8.0 GT/s", "66 MHz PCI", " GT/s"}) {
        EXPECT_EQ(ParsePciLinkSpeed(text), std::nullopt) << text;
    }
}

TEST(ParsePciLinkWidth, ReadsEveryWidth) {
    EXPECT_EQ(ParsePciLinkWidth("1"), 1);
    EXPECT_EQ(ParsePciLinkWidth("2"), 2);
    EXPECT_EQ(ParsePciLinkWidth("4"), 4);
    EXPECT_EQ(ParsePciLinkWidth("8"), 8);
    EXPECT_EQ(ParsePciLinkWidth("12"), 12);
    EXPECT_EQ(ParsePciLinkWidth("16"), 16);
    EXPECT_EQ(ParsePciLinkWidth("32"), 32);
}

TEST(ParsePciLinkWidth, RejectsOtherTexts) {
    for (const char* text : {"", "0", "3", "63", "255", "x4", "4 lanes", "-1", "65540"}) {
        EXPECT_EQ(ParsePciLinkWidth(text), std::nullopt) << text;
    }
}

TEST(GetPciLinkBandwidth, LeavesOutTheBitsOfTheLineCode) {
    EXPECT_EQ(GetPciLinkBandwidth(2500, 1), 2'000'000'000U);
    EXPECT_EQ(GetPciLinkBandwidth(5000, 4), 16'000'000'000U);
    EXPECT_EQ(GetPciLinkBandwidth(8000, 1), 7'876'923'076U);
    EXPECT_EQ(GetPciLinkBandwidth(32'000, 32), 1'008'246'153'846U);
    EXPECT_EQ(GetPciLinkBandwidth(64'000, 32), 2'048'000'000'000U);
}

}  // namespace
}  // namespace NVORHOST
