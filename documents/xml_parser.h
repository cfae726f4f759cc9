// A streaming XML parser on top of libxml2. It refuses all features of XML that inventories do not need.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace NVORHOST {

/// Maximum nesting depth of elements, including the root.
constexpr std::size_t maxElementDepth = 64;
/// Approximate maximum length of a tag, comment or processing instruction in bytes. Values have no limit.
constexpr std::size_t maxMarkupBytes = std::size_t{64} * 1024;
/// Maximum number of attributes of a tag. The check for duplicates takes quadratic time.
constexpr std::size_t maxAttributes = 64;
/// The attributes of one start tag; valid during `IXmlEvents::StartElement`.
class TXmlAttributes {
  public:
    /// The array that libxml2 passes: local name, prefix, URI, begin and end of the value for each attribute.
    /// `namespaceUri` is that of the element, null if it has none.
    explicit TXmlAttributes(std::span<const unsigned char*> parts, const unsigned char* namespaceUri)
        : parts_(parts), namespaceUri_(namespaceUri) {}

    /// Returns the value of an attribute without prefix; nullopt if it is missing.
    std::optional<std::string_view> Find(std::string_view name) const;
    /// The XML namespace of the element; empty if it has none.
    std::string_view GetNamespace() const;

  private:
    std::span<const unsigned char*> parts_;
    const unsigned char* namespaceUri_;
};

/// Receives the parts of a document. Implementations may throw any exception, which ends parsing and
/// propagates to the caller of the parser.
class IXmlEvents {
  public:
    virtual ~IXmlEvents() = default;

    /// `name` includes the prefix, if there is one.
    virtual void StartElement(std::string_view name, const TXmlAttributes& attributes) = 0;
    virtual void EndElement() = 0;
    /// `piece` is UTF-8 with references resolved. A text may be passed in several pieces.
    virtual void Text(std::string_view piece) = 0;
};

/// Parses one document.
/// Refused: a DOCTYPE with an internal subset, which could declare entities; references to entities that are
///          not predefined; elements deeper than `maxElementDepth`, markup longer than `maxMarkupBytes`, tags
///          with more than `maxAttributes` attributes. The external subset that a DOCTYPE names is never
///          fetched.
/// Memory:  proportional to one piece of input and the open tags.
/// Errors:  throws TDocumentCause for a document that is malformed or refused, std::bad_alloc, and the
///          exceptions of the events. The parser cannot be used afterwards.
class TXmlParser {
  public:
    /// `events` must outlive this object.
    explicit TXmlParser(IXmlEvents& events);
    TXmlParser(const TXmlParser&) = delete;
    TXmlParser& operator=(const TXmlParser&) = delete;
    ~TXmlParser();

    /// Parses the next bytes of the document, which may be split anywhere.
    void Feed(std::string_view bytes);
    /// Ends the document.
    void Finish();

    /// The 1-based line of the current event or of the error.
    int GetLine() const;

  private:
    class TState;

    std::unique_ptr<TState> state_;
};

}  // namespace NVORHOST
