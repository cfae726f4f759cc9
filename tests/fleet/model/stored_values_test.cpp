// Lists of values as JSON text and back.
#include "fleet/model/stored_values.h"

#include <gtest/gtest.h>

namespace NFLEET {
namespace {

using NINVENTORY::EShape;
using TLists = std::vector<std::vector<std::string>>;

TEST(FormatValues, WritesJson) {
    EXPECT_EQ(FormatValues({}), "[]");
    EXPECT_EQ(FormatValues({{"a"}, {}, {"b", "c"}, {""}}), R"(["a",[],["b","c"],""])");
    EXPECT_EQ(FormatValues({{"\"\\\n"}}), R"(["\"\\\u000a"])");
}

TEST(ParseValues, ReadsWhatWasWritten) {
    const std::string everyByte = [] {
        std::string bytes;
        for (int byte = 0; byte < 256; ++byte) {
            bytes.push_back(static_cast<char>(byte));
        }
        return bytes;
    }();
    for (const TLists& lists :
         {TLists{}, TLists{{}}, TLists{{"a"}, {"b", "c"}, {}}, TLists{{everyByte}, {"]", "[,\""}}}) {
        EXPECT_EQ(ParseValues(FormatValues(lists)), lists);
    }
}

TEST(ParseValues, ReturnsNulloptForOtherText) {
    for (const std::string_view text : {"", "[", "]", "[]]", "[\"a]", "[\"a\",]", "[1]", "[\"\\u00g0\"]",
                                        "[\"\\u01\"]", "[0]", "[[[]]]", "[\"\\n\"]"}) {
        EXPECT_EQ(ParseValues(text), std::nullopt) << text;
    }
}

TEST(FindInteger, AcceptsNumbersWithOneText) {
    EXPECT_EQ(FindInteger("unsignedLong", "600127266"), 600127266);
    EXPECT_EQ(FindInteger("short", "-60"), -60);
    EXPECT_EQ(FindInteger("unsignedLong", "0512"), std::nullopt);
    EXPECT_EQ(FindInteger("unsignedLong", " 512"), std::nullopt);
    EXPECT_EQ(FindInteger("unsignedLong", "18446744073709551615"), std::nullopt);
    EXPECT_EQ(FindInteger("string", "512"), std::nullopt);
    EXPECT_EQ(FindInteger("float", "1"), std::nullopt);
}

TEST(ParseVolatile, JoinsLayoutAndValues) {
    const std::vector<TVolatileValue> values = {
        {MakeDigest("a"), 3, {"MountCount", "unsignedLong", EShape::scalar, {"17"}}},
        {MakeDigest("b"), 0, {"States", "string", EShape::array, {"x", "y"}}}};

    const std::string usual = FormatUsualValues(values);
    std::vector<TVolatileValue> later = values;
    later[0].property.values = {"18"};

    EXPECT_EQ(FormatVolatile(values, usual), "[0,0]");
    EXPECT_EQ(FormatVolatile(later, usual), "[\"18\",0]");
    EXPECT_EQ(FormatLayout(values), FormatLayout(later));
    EXPECT_EQ(ParseVolatile(usual, FormatVolatile(values, usual)), values);
    EXPECT_EQ(ParseVolatile(usual, FormatVolatile(later, usual)), later);
    EXPECT_EQ(ParseVolatile(usual, "[]"), std::nullopt);
    EXPECT_EQ(ParseVolatile("[\"x\"]", "[\"y\"]"), std::nullopt);
}

}  // namespace
}  // namespace NFLEET
