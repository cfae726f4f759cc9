// HTML that is also well-formed XML, escaped by construction: markup comes from literals that are checked
// when they are compiled, and every other text is escaped as it is written.
#pragma once

#include "inventory/report/page_link.h"

#include <cstdint>
#include <initializer_list>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace NINVENTORY {

/// The name of an element or an attribute. Only literals of letters, digits and hyphens compile.
class TMarkupName {
  public:
    // NOLINTNEXTLINE(google-explicit-constructor): a literal is the name
    consteval TMarkupName(const char* literal) : name_(literal) {
        for (const char c : name_) {
            if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-')) {
                throw "a name has only letters, digits and hyphens";
            }
        }
    }
    constexpr std::string_view Get() const { return name_; }

  private:
    std::string_view name_;
};

/// The name of an attribute. Attributes that style, run or load something do not compile.
class TAttributeName {
  public:
    // NOLINTNEXTLINE(google-explicit-constructor): a literal is the name
    consteval TAttributeName(const char* literal) : name_(literal) {
        const std::string_view name = name_.Get();
        if (name == "style" || name == "src" || name == "href" || name.starts_with("on")) {
            throw "the page has no such attributes";
        }
    }
    constexpr std::string_view Get() const { return name_.Get(); }

  private:
    TMarkupName name_;
};

/// An attribute. Its value is escaped, and invisible characters in it are made visible.
struct TAttribute {
    TAttribute(TAttributeName attributeName, std::string_view text) : name(attributeName), value(text) {}
    TAttribute(TAttributeName attributeName, const std::string& text) : name(attributeName), value(text) {}
    TAttribute(TAttributeName attributeName, const char* text) : name(attributeName), value(text) {}
    TAttribute(TAttributeName attributeName, std::int64_t number)
        : name(attributeName), value(std::to_string(number)) {}
    TAttribute(TAttributeName attributeName, int number)
        : name(attributeName), value(std::to_string(number)) {}

    TAttributeName name;
    std::string value;
};

using TAttributes = std::initializer_list<TAttribute>;

/// Whole elements that a writer made before, such as for a page that is written later.
class TMarkup {
  public:
    /// Takes what a THtmlWriter has written, and nothing else: it is not escaped again.
    static TMarkup FromWriter(std::string bytes) { return TMarkup(std::move(bytes)); }
    const std::string& GetBytes() const { return bytes_; }

  private:
    explicit TMarkup(std::string bytes) : bytes_(std::move(bytes)) {}

    std::string bytes_;
};

/// Writes one page. The stream carries the errors.
class THtmlWriter {
  public:
    /// An element that is open. Ends it when it goes out of scope.
    class TElement {
      public:
        TElement(THtmlWriter& writer, std::string_view name) : writer_(writer), name_(name) {}
        ~TElement() { writer_.Close(name_); }
        TElement(const TElement&) = delete;
        TElement& operator=(const TElement&) = delete;

      private:
        THtmlWriter& writer_;
        std::string_view name_;
    };

    /// `out` must outlive this object.
    explicit THtmlWriter(std::ostream& out) : out_(out) {}

    /// Writes the document type and the first tag.
    [[nodiscard]] TElement Begin(std::string_view language);
    [[nodiscard]] TElement Element(TMarkupName name, TAttributes attributes = {});
    /// Begins a link to the element of this page with that id.
    [[nodiscard]] TElement Link(std::string_view id, TAttributes attributes = {});
    /// Begins a link to another page.
    [[nodiscard]] TElement Link(const TPageLink& page, TAttributes attributes = {});
    /// Writes an element without content, such as a rectangle.
    void Void(TMarkupName name, TAttributes attributes = {});
    /// Writes an element with nothing but text of the report itself.
    void Leaf(TMarkupName name, std::string_view text) { Leaf(name, {}, text); }
    void Leaf(TMarkupName name, TAttributes attributes, std::string_view text);

    /// Writes text of the report itself, or text that needs no isolation.
    void Text(std::string_view text);
    /// Writes text from the inventory. Its direction does not affect the text around it.
    void Value(std::string_view text);
    /// Writes elements that another writer made.
    void Markup(const TMarkup& markup) { out_ << markup.GetBytes(); }
    /// Writes a constant style sheet as the only content of a style element. It must contain none of "<&".
    void StyleSheet(std::string_view sheet);
    /// Writes a constant script as the only content of a script element. It must contain none of "<&".
    void Script(std::string_view script);

  private:
    void Open(std::string_view name, TAttributes attributes, std::string_view end);
    void Close(std::string_view name);
    void WriteAttributes(TAttributes attributes);
    TElement BeginLink(std::string_view start, std::string_view target, TAttributes attributes);
    void WriteEscaped(std::string_view text);

    std::ostream& out_;
};

}  // namespace NINVENTORY
