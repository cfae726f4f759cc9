#include "documents/xml_text.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

using std::literals::operator""s;

TEST(XmlText, AcceptsUtf8WithTabsAndLineEnds) {
    for (const char* text : {"", "a\tb\r\n", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\x7F"}) {
        EXPECT_TRUE(IsXmlText(text)) << text;
    }
}

TEST(XmlText, RejectsControlCharactersAndNoncharacters) {
    for (const std::string& text : {"\0"s, "\x1F"s, "\xEF\xBF\xBE"s, "\xEF\xBF\xBF"s}) {
        EXPECT_FALSE(IsXmlText(text));
    }
}

TEST(XmlText, RejectsMalformedUtf8) {
    for (const char* text : {"\x80", "\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "a\xFF"}) {
        EXPECT_FALSE(IsXmlText(text));
    }
}

TEST(IsXmlSpace, AcceptsOnlyTheWhiteSpaceOfXml) {
    EXPECT_TRUE(IsXmlSpace(""));
    EXPECT_TRUE(IsXmlSpace(" \t\r\n"));
    EXPECT_FALSE(IsXmlSpace("\v"));
    EXPECT_FALSE(IsXmlSpace("\f"));
    EXPECT_FALSE(IsXmlSpace(" a "));
}

TEST(TrimXmlSpace, RemovesOnlyTheWhiteSpaceOfXmlAtTheEnds) {
    EXPECT_EQ(TrimXmlSpace(" \t\r\na b\n"), "a b");
    EXPECT_EQ(TrimXmlSpace("\va\f"), "\va\f");
    EXPECT_EQ(TrimXmlSpace(" \n "), "");
}

}  // namespace
}  // namespace NVORHOST
