#include "text/find_row.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace NVORHOST {
namespace {

struct TRow {
    std::uint8_t code;
    std::string_view name;

    constexpr int GetTwice() const { return 2 * code; }
};

constexpr TRow rows[] = {{0x03, "Desktop"}, {0x09, "Laptop"}, {0x0A, "Notebook"}, {0x09, "duplicate"}};

TEST(FindRow, ReturnsTheFirstRowWithTheValue) {
    EXPECT_EQ(FindRow(rows, &TRow::code, 0x09), &rows[1]);
    EXPECT_EQ(FindRow(rows, &TRow::name, "Notebook"), &rows[2]);
}

TEST(FindRow, ReturnsNullptrForAnUnknownValue) {
    EXPECT_EQ(FindRow(rows, &TRow::code, 0x04), nullptr);
    EXPECT_EQ(FindRow(std::span<const TRow>(), &TRow::code, 0x03), nullptr);
}

TEST(FindRow, AcceptsAnOptionalValue) {
    EXPECT_EQ(FindRow(rows, &TRow::code, std::optional<std::uint8_t>(0x0A)), &rows[2]);
    EXPECT_EQ(FindRow(rows, &TRow::code, std::optional<std::uint8_t>()), nullptr);
}

TEST(FindRow, ComparesTheResultOfAMemberFunction) {
    EXPECT_EQ(FindRow(rows, &TRow::GetTwice, 20), &rows[2]);
}

TEST(FindRow, IsUsableAtCompileTime) {
    static_assert(FindRow(rows, &TRow::code, 0x03)->name == "Desktop");
    SUCCEED();
}

TEST(FindCell, ReturnsTheCellOfTheRow) {
    EXPECT_EQ(FindCell(rows, &TRow::code, 0x03, &TRow::name), "Desktop");
    EXPECT_EQ(FindCell(std::span(rows).first(2), &TRow::name, "Laptop", &TRow::code), 0x09);
}

TEST(FindCell, ReturnsNulloptForAnUnknownValue) {
    EXPECT_EQ(FindCell(rows, &TRow::code, 0x04, &TRow::name), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
