#include "machine/collect/firmware/slot_kind.h"

#include <gtest/gtest.h>

#include <map>

namespace NVORHOST {
namespace {

// ConnectorLayout of every code that has one.
TEST(FindSlotKind, ListsTheCodesOfTheReferenceAndNoOther) {
    const std::map<int, int> layouts = {
        {0x01, 1},  {0x02, 0},  {0x03, 7},  {0x04, 7},  {0x05, 7},  {0x06, 16}, {0x07, 7},  {0x08, 7},
        {0x09, 1},  {0x0A, 1},  {0x0B, 1},  {0x0C, 1},  {0x0D, 7},  {0x0E, 16}, {0x0F, 7},  {0x10, 7},
        {0x11, 7},  {0x12, 17}, {0x13, 7},  {0x14, 1},  {0x15, 1},  {0x16, 1},  {0x17, 1},  {0x18, 1},
        {0x19, 1},  {0x1A, 1},  {0x1B, 1},  {0x1C, 1},  {0x1D, 1},  {0x1E, 1},  {0x1F, 1},  {0x20, 1},
        {0x21, 1},  {0x22, 1},  {0x23, 1},  {0x24, 1},  {0x25, 1},  {0x26, 1},  {0x27, 1},  {0x28, 1},
        {0x30, 1},  {0xA0, 1},  {0xA1, 1},  {0xA2, 1},  {0xA3, 1},  {0xA4, 1},  {0xA5, 18}, {0xA6, 19},
        {0xA7, 20}, {0xA8, 21}, {0xA9, 22}, {0xAA, 23}, {0xAB, 18}, {0xAC, 19}, {0xAD, 20}, {0xAE, 21},
        {0xAF, 22}, {0xB0, 23}, {0xB1, 18}, {0xB2, 19}, {0xB3, 20}, {0xB4, 21}, {0xB5, 22}, {0xB6, 23},
        {0xB8, 18}, {0xB9, 19}, {0xBA, 20}, {0xBB, 21}, {0xBC, 22}, {0xBD, 23}, {0xBE, 18}, {0xBF, 19},
        {0xC0, 20}, {0xC1, 21}, {0xC2, 22}, {0xC3, 23}, {0xC4, 18}, {0xC5, 1},  {0xC6, 1},
    };
    for (int code = 0; code <= 0xFF; ++code) {
        const TSlotKind* kind = FindSlotKind(static_cast<std::uint8_t>(code));
        ASSERT_EQ(kind != nullptr, layouts.contains(code)) << code;
        if (kind != nullptr) {
            EXPECT_EQ(kind->connectorLayout, layouts.at(code)) << code;
            EXPECT_EQ(kind->code, code);
            EXPECT_EQ(kind->name.empty(), code <= 0x02) << code;
        }
    }
}

TEST(FindSlotKind, NamesTheType) {
    EXPECT_EQ(FindSlotKind(0x01)->name, "");
    EXPECT_EQ(FindSlotKind(0x06)->name, "PCI");
    EXPECT_EQ(FindSlotKind(0x17)->name, "M.2 Socket 3");
    EXPECT_EQ(FindSlotKind(0xB6)->name, "PCI Express 3 x16");
    EXPECT_EQ(FindSlotKind(0xC6)->name, "EDSFF E3");
}

TEST(FindSlotKind, MarksSlotsOfSpecialPurpose) {
    EXPECT_EQ(FindSlotKind(0x01)->specialPurpose, std::nullopt);
    EXPECT_EQ(FindSlotKind(0x02)->specialPurpose, std::nullopt);
    for (int code = 0x03; code <= 0xFF; ++code) {
        if (const TSlotKind* kind = FindSlotKind(static_cast<std::uint8_t>(code))) {
            EXPECT_EQ(kind->specialPurpose, code >= 0x09 && code <= 0x0C) << code;
        }
    }
}

TEST(FindSlotKind, MapsCardEdgesAndNumberedSlots) {
    EXPECT_EQ(FindSlotKind(0x06)->connector, ESlotConnector::cardEdge);
    EXPECT_EQ(FindSlotKind(0xA5)->connector, ESlotConnector::cardEdge);
    EXPECT_EQ(FindSlotKind(0x07)->connector, ESlotConnector::socket);
    EXPECT_EQ(FindSlotKind(0x14)->connector, ESlotConnector::socket);
    EXPECT_EQ(FindSlotKind(0x04)->number, ESlotNumber::given);
    EXPECT_EQ(FindSlotKind(0x14)->number, ESlotNumber::given);
    EXPECT_EQ(FindSlotKind(0xC6)->number, ESlotNumber::given);
    EXPECT_EQ(FindSlotKind(0x03)->number, ESlotNumber::none);
    EXPECT_EQ(FindSlotKind(0x07)->number, ESlotNumber::none);
}

TEST(FindMaxDataWidth, CountsBitsAndCallsLanesOther) {
    const std::map<int, int> widths = {{0x01, 1},  {0x02, 0},   {0x03, 8}, {0x04, 16}, {0x05, 32},
                                       {0x06, 64}, {0x07, 128}, {0x08, 1}, {0x09, 1},  {0x0A, 1},
                                       {0x0B, 1},  {0x0C, 1},   {0x0D, 1}, {0x0E, 1}};
    for (int code = 0; code <= 0xFF; ++code) {
        const auto width = FindMaxDataWidth(static_cast<std::uint8_t>(code));
        ASSERT_EQ(width.has_value(), widths.contains(code)) << code;
        EXPECT_EQ(width.value_or(0), width ? widths.at(code) : 0) << code;
    }
}

TEST(FindExpressLayout, MapsTheSizesThatCimHas) {
    const std::map<int, int> layouts = {{0x08, 19}, {0x09, 20}, {0x0A, 21},
                                        {0x0B, 22}, {0x0D, 23}, {0x0E, 24}};
    for (int code = 0; code <= 0xFF; ++code) {
        const auto layout = FindExpressLayout(static_cast<std::uint8_t>(code));
        ASSERT_EQ(layout.has_value(), layouts.contains(code)) << code;
        EXPECT_EQ(layout.value_or(0), layout ? layouts.at(code) : 0) << code;
    }
}

TEST(FindSlotUsage, NamesAvailableInUseAndUnavailable) {
    EXPECT_EQ(FindSlotUsage(1), std::nullopt);
    EXPECT_EQ(FindSlotUsage(2), std::nullopt);
    EXPECT_EQ(FindSlotUsage(3), "available");
    EXPECT_EQ(FindSlotUsage(4), "in use");
    EXPECT_EQ(FindSlotUsage(5), "unavailable");
    EXPECT_EQ(FindSlotUsage(6), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
