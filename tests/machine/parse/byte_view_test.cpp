#include "machine/parse/byte_view.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using std::literals::operator""sv;

const TByteView view("\x01\x02\x03\x04\x05\x06\x07\x88"sv);

TEST(ByteView, ReadsLittleEndianFields) {
    EXPECT_EQ(view.GetByte(7), 0x88);
    EXPECT_EQ(view.GetWord(0), 0x0201);
    EXPECT_EQ(view.GetWord(6), 0x8807);
    EXPECT_EQ(view.GetDword(4), 0x88070605U);
    EXPECT_EQ(view.GetQword(0), 0x8807060504030201U);
}

TEST(ByteView, ReturnsNulloptForAFieldThatCrossesTheEnd) {
    EXPECT_EQ(view.GetByte(8), std::nullopt);
    EXPECT_EQ(view.GetWord(7), std::nullopt);
    EXPECT_EQ(view.GetDword(5), std::nullopt);
    EXPECT_EQ(view.GetQword(1), std::nullopt);
}

TEST(ByteView, ReturnsNulloptForOffsetsThatOverflow) {
    EXPECT_EQ(view.GetDword(static_cast<std::size_t>(-2)), std::nullopt);
    EXPECT_EQ(view.GetRange(1, static_cast<std::size_t>(-1)), std::nullopt);
}

TEST(ByteView, ReturnsRangesWithinTheBytes) {
    EXPECT_EQ(view.GetRange(6, 2), "\x07\x88"sv);
    EXPECT_EQ(view.GetRange(8, 0), ""sv);
    EXPECT_EQ(view.GetRange(8, 1), std::nullopt);
    EXPECT_EQ(view.GetRange(9, 0), std::nullopt);
    EXPECT_EQ(view.GetSize(), 8U);
}

}  // namespace
}  // namespace NVORHOST
