#include "machine/parse/security_state.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

std::string Variable(char value) {
    return std::string("\x06\x00\x00\x00", 4) + value;
}

TEST(ParseSecureBoot, ReadsTheByteAfterTheAttributes) {
    EXPECT_EQ(ParseSecureBoot(Variable('\x01')), true);
    EXPECT_EQ(ParseSecureBoot(Variable('\x00')), false);
}

TEST(ParseSecureBoot, RejectsOtherValuesAndSizes) {
    EXPECT_EQ(ParseSecureBoot(Variable('\x02')), std::nullopt);
    EXPECT_EQ(ParseSecureBoot(Variable('\xFF')), std::nullopt);
    EXPECT_EQ(ParseSecureBoot(""), std::nullopt);
    EXPECT_EQ(ParseSecureBoot(Variable('\x01').substr(0, 4)), std::nullopt);
    EXPECT_EQ(ParseSecureBoot(Variable('\x01') + '\x01'), std::nullopt);
}

TEST(ParseChosenWord, ReturnsTheWordInBrackets) {
    EXPECT_EQ(ParseChosenWord("[none] integrity confidentiality\n"), "none");
    EXPECT_EQ(ParseChosenWord("none [integrity] confidentiality"), "integrity");
    EXPECT_EQ(ParseChosenWord("none integrity [confidentiality]"), "confidentiality");
}

TEST(ParseChosenWord, RejectsTextsWithoutOneChoice) {
    for (const char* text : {"", "none integrity", "[]", "[", "]", "[none", "none]", "[none] [integrity]"}) {
        EXPECT_EQ(ParseChosenWord(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace NVORHOST
