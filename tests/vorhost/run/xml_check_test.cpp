#include "vorhost/run/xml_check.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace NVORHOST {
namespace {

// Returns 0 for a well-formed document.
std::size_t FaultyLine(const std::string& document) {
    TXmlCheck check;
    std::istringstream lines(document);
    for (std::string line; std::getline(lines, line);) {
        check.AddLine(line);
    }
    return check.FindFault() ? check.FindFault()->line : 0;
}

std::size_t FaultyLineWithValue(const std::string& value) {
    return FaultyLine("<?xml version=\"1.0\"?>\n<A>\n<B a=\"x\" b=\"y\">\n<V>" + value +
                      "</V>\n</B>\n<C />\n</A>");
}

std::size_t FaultyLineWithAttribute(const std::string& value) {
    return FaultyLine("<?xml version=\"1.0\"?>\n<A>\n<B a=\"x\" b=\"" + value + "\" c=\"y\">\n</B>\n</A>");
}

TEST(XmlCheck, AcceptsElementsAttributesReferencesAndText) {
    for (const std::string value :
         {"", "a b", "&amp;&lt;&gt;&quot;&apos;", "&#65;&#x4a;", "\xC3\xA9", "a > b \" '"}) {
        EXPECT_EQ(FaultyLineWithValue(value), 0U) << value;
    }
    EXPECT_EQ(FaultyLineWithAttribute("a 'b' > &amp; \xC3\xA9"), 0U);
    EXPECT_EQ(FaultyLine("<A b= \"c\"></A>"), 0U);
}

TEST(XmlCheck, FindsTextThatIsNoXml) {
    for (const std::string value : {"A&B", "A&", "&;", "&nbsp;", "&#;", "&#x;", "&#1a;", "<", "a<b", "<1>",
                                    "</V>", "</W><W>", "\x01", "</V ><V>"}) {
        EXPECT_EQ(FaultyLineWithValue(value), 4U) << value;
    }
}

TEST(XmlCheck, FindsAttributesThatAreNoXml) {
    for (const std::string value : {"A&B", "a<b", "a\"b", "a\" a=\"", "a\"b=\"", "a\" 1=\"", "\x1B"}) {
        EXPECT_EQ(FaultyLineWithAttribute(value), 3U) << value;
    }
}

TEST(XmlCheck, NamesTheFirstFaultyLineAlone) {
    EXPECT_EQ(FaultyLine("<A>\n<B>&</B>\n<C>&</C>\n</A>"), 2U);
}

}  // namespace
}  // namespace NVORHOST
