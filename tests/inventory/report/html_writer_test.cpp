#include "inventory/report/html_writer.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace NINVENTORY {
namespace {

std::string ValueOf(std::string_view text) {
    std::ostringstream out;
    THtmlWriter(out).Value(text);
    return out.str();
}

std::string AttributeOf(std::string_view text) {
    std::ostringstream out;
    THtmlWriter(out).Void("img", {{"alt", text}});
    return out.str();
}

TEST(HtmlWriter, EscapesMarkupInValuesOnce) {
    EXPECT_EQ(ValueOf("<script>alert('1' & \"2\")</script>"),
              "<bdi>&lt;script&gt;alert(&#39;1&#39; &amp; &quot;2&quot;)&lt;/script&gt;</bdi>");
    EXPECT_EQ(ValueOf("&amp;"), "<bdi>&amp;amp;</bdi>");
}

TEST(HtmlWriter, EscapesMarkupInAttributesOnce) {
    EXPECT_EQ(AttributeOf("\"><b>&lt;'"), "<img alt=\"&quot;&gt;&lt;b&gt;&amp;lt;&#39;\"/>");
}

TEST(HtmlWriter, KeepsTextOfAnyLanguageInABidirectionalIsolate) {
    EXPECT_EQ(ValueOf("\u05D0\u05D1 16 GiB"), "<bdi>\u05D0\u05D1 16 GiB</bdi>");
}

TEST(HtmlWriter, MakesDirectionMarksVisible) {
    EXPECT_EQ(ValueOf("a\u202Eb\u2069c\u200F"), "<bdi>a\\u202eb\\u2069c\\u200f</bdi>");
    EXPECT_EQ(AttributeOf("a\u202Eb"), "<img alt=\"a\\u202eb\"/>");
}

TEST(HtmlWriter, MakesControlCharactersVisible) {
    EXPECT_EQ(ValueOf(std::string_view("a\0b\x1b\n\t\x7F\u0085", 9)),
              "<bdi>a\\x00b\\x1b\\n\\t\\x7f\\u0085</bdi>");
}

TEST(HtmlWriter, MakesMalformedUtf8Visible) {
    EXPECT_EQ(ValueOf("Caf\xE9 \xC0\xAF\xED\xA0\x80"), "<bdi>Caf\\xe9 \\xc0\\xaf\\xed\\xa0\\x80</bdi>");
}

TEST(HtmlWriter, MakesTheCharactersVisibleThatXmlDoesNotAllow) {
    EXPECT_EQ(ValueOf("\uFFFE\uFFFF\uFFFD"), "<bdi>\\ufffe\\uffff\uFFFD</bdi>");
}

TEST(HtmlWriter, WritesLongTextsWhole) {
    const std::string text(10'000, 'x');
    EXPECT_EQ(ValueOf(text), "<bdi>" + text + "</bdi>");
}

TEST(HtmlWriter, EndsElementsInReverseOrder) {
    std::ostringstream out;
    THtmlWriter html(out);
    {
        const auto list = html.Element("ul", {{"class", "tree"}});
        const auto item = html.Element("li");
        html.Leaf("b", "a & b");
    }
    EXPECT_EQ(out.str(), "<ul class=\"tree\"><li><b>a &amp; b</b></li>\n</ul>\n");
}

TEST(HtmlWriter, LinksOnlyWithinThePage) {
    std::ostringstream out;
    THtmlWriter html(out);
    {
        const auto link = html.Link("a\"b", {{"class", "skip"}});
        html.Text("go");
    }
    EXPECT_EQ(out.str(), "<a href=\"#a&quot;b\" class=\"skip\">go</a>");
}

TEST(HtmlWriter, WritesElementsWithoutContentAsXmlDoes) {
    std::ostringstream out;
    THtmlWriter html(out);
    html.Void("rect", {{"x", 3}, {"width", 12}});
    EXPECT_EQ(out.str(), "<rect x=\"3\" width=\"12\"/>\n");
}

template <std::size_t length>
struct TLiteral {
    constexpr TLiteral(const char (&text)[length]) {  // NOLINT(google-explicit-constructor)
        std::copy_n(text, length, value);
    }
    char value[length];
};

template <TLiteral name>
concept CAttribute = requires {
    typename std::bool_constant<(TAttributeName(name.value), true)>;
};

static_assert(CAttribute<"aria-label">);
static_assert(!CAttribute<"style">);
static_assert(!CAttribute<"onclick">);
static_assert(!CAttribute<"href">);
static_assert(!CAttribute<"src">);
static_assert(!CAttribute<"a b">);

}  // namespace
}  // namespace NINVENTORY
