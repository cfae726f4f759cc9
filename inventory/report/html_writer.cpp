#include "inventory/report/html_writer.h"

#include "text/shown_text.h"

#include <algorithm>
#include <iterator>

namespace NINVENTORY {
namespace {

// A line ends after these, where white space is not shown.
// clang-format off
constexpr std::string_view blocks[] = {
    "article", "body", "caption", "dd", "desc", "details", "div", "dl", "dt", "figcaption", "figure", "footer", "g",
    "h1", "h2", "h3", "head", "header", "html", "li", "line", "main", "meta", "nav", "ol", "p", "rect", "section",
    "script", "style", "summary", "svg", "table", "tbody", "td", "text", "th", "thead", "title", "tr", "ul",
};
// clang-format on

bool IsBlock(std::string_view name) {
    return std::ranges::find(blocks, name) != std::end(blocks);
}

std::string_view FindEscape(char c) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&#39;";
        default:
            return {};
    }
}

// U+FFFE and U+FFFF are UTF-8 that XML does not allow.
std::string_view FindNoncharacter(std::string_view text) {
    return text.starts_with("\xEF\xBF\xBE")   ? "\\ufffe"
           : text.starts_with("\xEF\xBF\xBF") ? "\\uffff"
                                              : std::string_view();
}

}  // namespace

THtmlWriter::TElement THtmlWriter::Begin(std::string_view language) {
    out_ << "<!DOCTYPE html>\n";
    return Element("html", {{"xmlns", "http://www.w3.org/1999/xhtml"}, {"lang", language}});
}

THtmlWriter::TElement THtmlWriter::Element(TMarkupName name, TAttributes attributes) {
    Open(name.Get(), attributes, ">");
    return {*this, name.Get()};
}

THtmlWriter::TElement THtmlWriter::Link(std::string_view id, TAttributes attributes) {
    return BeginLink("#", id, attributes);
}

THtmlWriter::TElement THtmlWriter::Link(const TPageLink& page, TAttributes attributes) {
    return BeginLink("", page.Get(), attributes);
}

THtmlWriter::TElement THtmlWriter::BeginLink(std::string_view start, std::string_view target,
                                             TAttributes attributes) {
    out_ << "<a href=\"" << start;
    WriteEscaped(target);
    out_ << '"';
    WriteAttributes(attributes);
    out_ << '>';
    return {*this, "a"};
}

void THtmlWriter::Void(TMarkupName name, TAttributes attributes) {
    Open(name.Get(), attributes, IsBlock(name.Get()) ? "/>\n" : "/>");
}

void THtmlWriter::Leaf(TMarkupName name, TAttributes attributes, std::string_view text) {
    const TElement element = Element(name, attributes);
    Text(text);
}

void THtmlWriter::Text(std::string_view text) {
    WriteEscaped(NVORHOST::MakeVisible(text));
}

void THtmlWriter::Value(std::string_view text) {
    const TElement isolate = Element("bdi");
    Text(text);
}

void THtmlWriter::StyleSheet(std::string_view sheet) {
    const TElement style = Element("style");
    out_ << sheet;
}

void THtmlWriter::Script(std::string_view script) {
    const TElement element = Element("script");
    out_ << script;
}

void THtmlWriter::Open(std::string_view name, TAttributes attributes, std::string_view end) {
    out_ << '<' << name;
    WriteAttributes(attributes);
    out_ << end;
}

void THtmlWriter::WriteAttributes(TAttributes attributes) {
    for (const TAttribute& attribute : attributes) {
        out_ << ' ' << attribute.name.Get() << "=\"";
        WriteEscaped(NVORHOST::MakeVisible(attribute.value));
        out_ << '"';
    }
}

void THtmlWriter::Close(std::string_view name) {
    out_ << "</" << name << (IsBlock(name) ? ">\n" : ">");
}

void THtmlWriter::WriteEscaped(std::string_view text) {
    while (!text.empty()) {
        // U+FFFE and U+FFFF begin with the byte EFh.
        const std::size_t plain = std::min(text.find_first_of("&<>\"'\xEF"), text.size());
        out_ << text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) {
            return;
        }
        const std::string_view noncharacter = FindNoncharacter(text);
        const std::string_view escape = FindEscape(text.front());
        if (!noncharacter.empty()) {
            out_ << noncharacter;
        } else if (!escape.empty()) {
            out_ << escape;
        } else {
            out_ << text.front();
        }
        text.remove_prefix(noncharacter.empty() ? 1 : 3);
    }
}

}  // namespace NINVENTORY
