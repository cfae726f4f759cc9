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

    std::vector<TVolatileValue> later = values;
    later[0].property.values = {"18"};
    const TStoredLayout layout = MakeStoredLayout(FormatUsualForm(values), values);

    EXPECT_EQ(FormatVolatile(values, layout), "[0,0]");
    EXPECT_EQ(FormatVolatile(later, layout), "[\"18\",0]");
    EXPECT_EQ(FormatLayout(values), FormatLayout(later));
    EXPECT_EQ(ParseVolatile(layout, FormatVolatile(values, layout)), values);
    EXPECT_EQ(ParseVolatile(layout, FormatVolatile(later, layout)), later);
}

TEST(ParseVolatile, SharesTheFormOfMachinesThatAreMadeAlike) {
    const auto make = [](const std::string& name, const std::string& mounts) {
        return std::vector<TVolatileValue>{
            {MakeDigest("os " + name), 3, {"NumberOfUsers", "unsignedInt", EShape::scalar, {"0"}}},
            {MakeDigest("disk " + name), 1, {"MountCount", "unsignedLong", EShape::scalar, {mounts}}},
            {MakeDigest("disk " + name), 2, {"States", "string", EShape::array, {}}}};
    };
    const auto first = make("a", "17");
    const auto second = make("b", "18");
    const TStoredLayout layout = MakeStoredLayout(FormatUsualForm(first), second);

    EXPECT_EQ(
        layout.form,
        R"([["0","3","NumberOfUsers","unsignedInt","1","0"],["1","1","MountCount","unsignedLong","1","17"],)"
        R"(["1","2","States","string","2"]])");
    EXPECT_EQ(layout.resources,
              std::string(MakeDigest("os b").GetView()) + std::string(MakeDigest("disk b").GetView()));
    EXPECT_EQ(layout.usual, R"([0,"18",0])");
    EXPECT_EQ(FormatForm(first), FormatForm(second));
    EXPECT_NE(FormatLayout(first), FormatLayout(second));
    EXPECT_EQ(FormatVolatile(second, layout), "[0,0,0]");
    EXPECT_EQ(ParseVolatile(layout, "[0,0,0]"), second);
}

TEST(ParseVolatile, ReturnsNulloptForRowsOfDifferentLayouts) {
    const std::string form = R"([["0","3","NumberOfUsers","unsignedInt","1","0"]])";
    const std::string resource(TDigest::size, 'x');

    EXPECT_NE(ParseVolatile({form, resource, "[0]"}, "[0]"), std::nullopt);
    EXPECT_EQ(ParseVolatile({form, resource, "[0]"}, "[]"), std::nullopt);
    EXPECT_EQ(ParseVolatile({form, resource, "[0,0]"}, "[0]"), std::nullopt);
    EXPECT_EQ(ParseVolatile({form, "", "[0]"}, "[0]"), std::nullopt);
    EXPECT_EQ(ParseVolatile({R"([["1","3","NumberOfUsers","unsignedInt","1"]])", resource, "[0]"}, "[0]"),
              std::nullopt);
    EXPECT_EQ(ParseVolatile({R"(["0"])", resource, "[0]"}, "[0]"), std::nullopt);
    EXPECT_EQ(ParseVolatile({"", "", ""}, "[0]"), std::nullopt);
}

}  // namespace
}  // namespace NFLEET
