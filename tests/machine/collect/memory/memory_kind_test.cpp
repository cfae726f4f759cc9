#include "machine/collect/memory/memory_kind.h"

#include <gtest/gtest.h>

#include <map>

namespace NVORHOST {
namespace {

TEST(FindMemoryFormFactor, MovesEveryCodeToItsCimNumber) {
    const std::map<int, int> numbers = {{0x01, 1}, {0x02, 0},  {0x03, 7},  {0x04, 2},  {0x05, 1},
                                        {0x06, 3}, {0x07, 4},  {0x08, 6},  {0x09, 8},  {0x0A, 9},
                                        {0x0B, 1}, {0x0C, 11}, {0x0D, 12}, {0x0E, 13}, {0x0F, 1},
                                        {0x10, 1}, {0x11, 1},  {0x12, 1},  {0x13, 1}};
    const std::map<int, int> removals = {{0x03, 3}, {0x05, 2}, {0x09, 3}, {0x0B, 2}, {0x0C, 3}, {0x0D, 3},
                                         {0x0E, 3}, {0x0F, 3}, {0x10, 2}, {0x11, 3}, {0x12, 3}, {0x13, 3}};
    for (int code = 0; code <= 0xFF; ++code) {
        const auto* factor = FindMemoryFormFactor(static_cast<std::uint8_t>(code));
        ASSERT_EQ(factor != nullptr, numbers.contains(code)) << code;
        if (factor != nullptr) {
            EXPECT_EQ(factor->cimFormFactor, numbers.at(code)) << code;
            EXPECT_EQ(factor->removalConditions.has_value(), removals.contains(code)) << code;
            EXPECT_EQ(factor->removalConditions.value_or(0), removals.contains(code) ? removals.at(code) : 0)
                << code;
        }
    }
}

TEST(FindMemoryFormFactor, NamesEveryFormButOtherAndUnknown) {
    for (int code = 0x01; code <= 0x13; ++code) {
        EXPECT_EQ(FindMemoryFormFactor(static_cast<std::uint8_t>(code))->name.empty(), code <= 0x02) << code;
    }
    EXPECT_EQ(FindMemoryFormFactor(0x09)->name, "DIMM");
    EXPECT_EQ(FindMemoryFormFactor(0x0D)->name, "SODIMM");
    EXPECT_EQ(FindMemoryFormFactor(0x13)->name, "CSODIMM");
}

TEST(FindMemoryKind, MovesEveryCodeToItsCimNumber) {
    const std::map<int, int> numbers = {
        {0x01, 1},  {0x02, 0},  {0x03, 2},  {0x04, 6},  {0x05, 7},  {0x06, 8},  {0x07, 9},
        {0x08, 10}, {0x09, 11}, {0x0A, 12}, {0x0B, 13}, {0x0C, 14}, {0x0D, 15}, {0x0E, 16},
        {0x0F, 17}, {0x10, 18}, {0x11, 19}, {0x12, 20}, {0x13, 21}, {0x14, 23}, {0x18, 24},
        {0x19, 25}, {0x1A, 26}, {0x1B, 27}, {0x1C, 28}, {0x1D, 29}, {0x1E, 30}, {0x1F, 1},
        {0x20, 1},  {0x21, 1},  {0x22, 1},  {0x23, 1},  {0x24, 1},  {0x25, 1},
    };
    for (int code = 0; code <= 0xFF; ++code) {
        const auto* kind = FindMemoryKind(static_cast<std::uint8_t>(code));
        ASSERT_EQ(kind != nullptr, numbers.contains(code)) << code;
        EXPECT_EQ(kind != nullptr ? kind->cimMemoryType : 0, kind != nullptr ? numbers.at(code) : 0) << code;
    }
}

TEST(FindMemoryKind, NamesEveryTypeButOtherAndUnknown) {
    EXPECT_EQ(FindMemoryKind(0x01)->name, "");
    EXPECT_EQ(FindMemoryKind(0x02)->name, "");
    EXPECT_EQ(FindMemoryKind(0x03)->name, "DRAM");
    EXPECT_EQ(FindMemoryKind(0x14)->name, "DDR2 FB-DIMM");
    EXPECT_EQ(FindMemoryKind(0x1A)->name, "DDR4");
    EXPECT_EQ(FindMemoryKind(0x25)->name, "MRDIMM");
}

}  // namespace
}  // namespace NVORHOST
