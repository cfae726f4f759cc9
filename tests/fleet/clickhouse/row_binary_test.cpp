#include "fleet/clickhouse/row_binary.h"

#include <gtest/gtest.h>

namespace NFLEET {
namespace {

TEST(RowBinary, HasTheBytesOfEachValue) {
    TRowBinaryWriter writer;
    writer.Number(std::uint8_t{1}).Number(std::uint32_t{0x01020304}).Number(std::int64_t{-2}).Fixed("ab");
    writer.Text("cde").Text(std::string(200, 'x')).Count(0);
    EXPECT_EQ(writer.GetBytes(), std::string("\x01\x04\x03\x02\x01\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"
                                             "ab\x03"
                                             "cde\xC8\x01") +
                                     std::string(200, 'x') + std::string(1, '\0'));
}

TEST(RowBinary, ReadsWhatWasWritten) {
    const std::string hostile("'\"\\\t\n\0\xFF`", 8);
    TRowBinaryWriter writer;
    writer.Number(std::uint8_t{255}).Number(std::int64_t{-5}).Fixed("ab").Text(hostile).Count(300);
    writer.Fixed(std::string(300, 'y'));
    TRowBinaryReader reader(writer.GetBytes());
    EXPECT_EQ(reader.Number<std::uint8_t>(), 255);
    EXPECT_EQ(reader.Number<std::int64_t>(), -5);
    EXPECT_EQ(reader.Fixed(2), "ab");
    EXPECT_EQ(reader.Text(), hostile);
    EXPECT_EQ(reader.Count(), 300U);
    EXPECT_EQ(reader.Fixed(300), std::string(300, 'y'));
    EXPECT_TRUE(reader.IsComplete());
    EXPECT_EQ(reader.GetRest(), "");
}

TEST(RowBinary, IsIncompleteAtEveryPrefixOfARow) {
    TRowBinaryWriter writer;
    writer.Number(std::uint32_t{7}).Text("text").Number(std::int64_t{9}).Fixed("ab");
    const std::string& row = writer.GetBytes();
    for (std::size_t size = 0; size < row.size(); ++size) {
        TRowBinaryReader reader(std::string_view(row).substr(0, size));
        (void)reader.Number<std::uint32_t>();
        (void)reader.Text();
        (void)reader.Number<std::int64_t>();
        (void)reader.Fixed(2);
        EXPECT_FALSE(reader.IsComplete()) << size;
    }
}

TEST(RowBinary, IsIncompleteForCountsThatAreTooLarge) {
    for (const std::string& bytes : {std::string("\x05"
                                                 "abcd"),
                                     std::string(9, '\xFF'), std::string(20, '\xFF')}) {
        TRowBinaryReader reader(bytes);
        EXPECT_EQ(reader.Text(), "");
        EXPECT_FALSE(reader.IsComplete());
    }
}

}  // namespace
}  // namespace NFLEET
