#include "vorhost/cimxml/xml_output.h"

#include <gtest/gtest.h>

#include <sstream>

namespace NVORHOST {
namespace {

std::string Written(void (*write)(TXmlOutput& out)) {
    std::ostringstream stream;
    TXmlOutput out(stream);
    write(out);
    out.Flush();
    return stream.str();
}

TEST(XmlOutput, EscapesTextButKeepsTabsAndLineFeeds) {
    EXPECT_EQ(Written([](TXmlOutput& out) { out.Text("a<b>&\"\t\n\r"); }), "a&lt;b&gt;&amp;\"\t\n&#13;");
}

TEST(XmlOutput, EscapesWhiteSpaceAndQuotesInAttributes) {
    EXPECT_EQ(Written([](TXmlOutput& out) { out.Attribute("NAME", "a<\"b\"\t\n\r&"); }),
              " NAME=\"a&lt;&quot;b&quot;&#9;&#10;&#13;&amp;\"");
}

TEST(XmlOutput, WritesMarkupUnchanged) {
    EXPECT_EQ(Written([](TXmlOutput& out) { out.Markup("<VALUE.NULL/>"); }), "<VALUE.NULL/>");
}

TEST(XmlOutput, WritesLongBytesInBase64WithPaddingOnlyAtTheEnd) {
    const std::string text = Written([](TXmlOutput& out) { out.Base64(std::string(10'000, '\0')); });
    EXPECT_EQ(text.size(), 13'336U);
    EXPECT_EQ(text.find('='), text.size() - 2);
}

TEST(XmlOutput, KeepsTheOrderOfPiecesThatExceedTheBuffer) {
    const std::string text = Written([](TXmlOutput& out) {
        out.Markup("first");
        out.Markup(std::string(100'000, 'x'));
        out.Markup("last");
    });
    EXPECT_EQ(text, "first" + std::string(100'000, 'x') + "last");
}

}  // namespace
}  // namespace NVORHOST
