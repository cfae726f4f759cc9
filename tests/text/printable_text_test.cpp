#include "text/printable_text.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr char mark[] = "\xEF\xBF\xBD";

TEST(ToPrintableText, KeepsPlainText) {
    const auto result = ToPrintableText("Xeon(R) & <Co> \"E5\"");
    EXPECT_EQ(result.text, "Xeon(R) & <Co> \"E5\"");
    EXPECT_EQ(result.replacements, 0U);
}

TEST(ToPrintableText, TrimsBlanksLineEndsAndPadding) {
    EXPECT_EQ(ToPrintableText(std::string_view("  QEMU HARDDISK  \n\0\0", 20)).text, "QEMU HARDDISK");
    EXPECT_EQ(ToPrintableText(" \t\r\n").text, "");
    EXPECT_EQ(ToPrintableText("").text, "");
}

TEST(ToPrintableText, ReplacesInnerTabsAndLineEndsByBlanks) {
    const auto result = ToPrintableText("a\tb\nc");
    EXPECT_EQ(result.text, "a b c");
    EXPECT_EQ(result.replacements, 0U);
}

TEST(ToPrintableText, KeepsWellFormedUtf8OfEveryLength) {
    const std::string text = "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x92\xBE";  // e acute, euro, floppy disk
    EXPECT_EQ(ToPrintableText(text).text, text);
    EXPECT_EQ(ToPrintableText(text).replacements, 0U);
}

TEST(ToPrintableText, ReplacesMalformedBytes) {
    const auto result = ToPrintableText("a\xFFz\x80");
    EXPECT_EQ(result.text, std::string("a") + mark + "z" + mark);
    EXPECT_EQ(result.replacements, 2U);
}

TEST(ToPrintableText, ReplacesInnerControlCharactersAndNuls) {
    EXPECT_EQ(ToPrintableText(std::string_view("a\0b", 3)).text, std::string("a") + mark + "b");
    EXPECT_EQ(ToPrintableText("a\x1B[b\x7F").text, std::string("a") + mark + "[b" + mark);
    EXPECT_EQ(ToPrintableText("a\xC2\x85"
                              "b")
                  .text,
              std::string("a") + mark + "b");
    EXPECT_EQ(ToPrintableText("a\xC2\x85"
                              "b")
                  .replacements,
              2U);
}

TEST(ToPrintableText, ReplacesOverlongFormsSurrogatesAndCodesAboveTheLast) {
    EXPECT_EQ(ToPrintableText("\xC0\xAF").replacements, 2U);
    EXPECT_EQ(ToPrintableText("\xE0\x80\xAF").replacements, 3U);
    EXPECT_EQ(ToPrintableText("\xED\xA0\x80").replacements, 3U);
    EXPECT_EQ(ToPrintableText("\xF4\x90\x80\x80").replacements, 4U);
    EXPECT_EQ(ToPrintableText("\xF5\x80\x80\x80").replacements, 4U);
}

TEST(ToPrintableText, ReplacesATruncatedSequence) {
    EXPECT_EQ(ToPrintableText("a\xE2\x82").text, std::string("a") + mark + mark);
}

TEST(SqueezeBlanks, ReplacesRunsOfBlanksByOne) {
    EXPECT_EQ(SqueezeBlanks("Kingston                       HP647647-071-HYE"), "Kingston HP647647-071-HYE");
    EXPECT_EQ(SqueezeBlanks("  a  b c   "), "a b c");
    EXPECT_EQ(SqueezeBlanks("one word"), "one word");
    EXPECT_EQ(SqueezeBlanks("   "), "");
    EXPECT_EQ(SqueezeBlanks(""), "");
}

}  // namespace
}  // namespace NVORHOST
