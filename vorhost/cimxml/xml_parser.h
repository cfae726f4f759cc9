// The XML library behind an interface of this project's own: bytes go in piece by piece, elements and text
// come out, and everything that no namespace file needs is refused.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace NVORHOST {

/// The attributes of one start tag; valid during `IXmlEvents::StartElement`.
class TXmlAttributes {
  public:
    /// As the library hands them out: local name, prefix, URI, begin and end of the value for each attribute.
    explicit TXmlAttributes(std::span<const unsigned char*> parts) : parts_(parts) {}

    /// The value of an attribute without prefix; nullopt when it is not there.
    std::optional<std::string_view> Find(std::string_view name) const;

  private:
    std::span<const unsigned char*> parts_;
};

/// What a document is made of. Implementations may throw anything; parsing stops and the exception passes on.
class IXmlEvents {
  public:
    virtual ~IXmlEvents() = default;

    /// `name` as written, with its prefix if it has one.
    virtual void StartElement(std::string_view name, const TXmlAttributes& attributes) = 0;
    virtual void EndElement() = 0;
    /// A piece of text as UTF-8, references resolved; a text may come in several pieces.
    virtual void Text(std::string_view piece) = 0;
};

/// Parses one document.
/// Refused: entity declarations (a DOCTYPE with an internal subset at all), references to other than the
///          predefined entities, elements deeper than `maxElementDepth`, markup longer than
///          `maxMarkupBytes`, tags with more than `maxAttributes` attributes. The external subset that a
///          DOCTYPE names is never fetched.
/// Memory:  what is handed in at a time, and the open tags.
/// Errors:  TCimXmlCause for a document that is not well formed or refused, std::bad_alloc, and what the
///          events throw. Nothing more can be parsed after any of them.
class TXmlParser {
  public:
    /// `events` must outlive this object.
    explicit TXmlParser(IXmlEvents& events);
    TXmlParser(const TXmlParser&) = delete;
    TXmlParser& operator=(const TXmlParser&) = delete;
    ~TXmlParser();

    /// The next bytes of the document; it may be cut anywhere.
    void Feed(std::string_view bytes);
    /// Says that the document is complete.
    void Finish();

    /// The line of the present event, or of the error, from 1 on.
    int GetLine() const;

  private:
    class TState;

    std::unique_ptr<TState> state_;
};

}  // namespace NVORHOST
