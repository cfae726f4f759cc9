// Writes markup and escaped text to an XML document. Buffered, because documents consist of millions of small
// pieces.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Writes to a stream through a buffer. Call `Flush` at the end. Errors: set the state of the stream.
class TXmlOutput {
  public:
    /// `out` must outlive this object.
    explicit TXmlOutput(std::ostream& out);

    /// Writes bytes unchanged.
    void Markup(std::string_view bytes);
    /// Writes the content of an element, escaped so that a parser returns the same bytes. They must be XML
    /// text.
    void Text(std::string_view text);
    /// Writes ` name="value"`. The value must be XML text.
    void Attribute(std::string_view name, std::string_view value);
    /// Writes bytes in Base64.
    void Base64(std::string_view bytes);
    void Flush();

  private:
    std::ostream& out_;
    std::string buffer_;
};

}  // namespace NVORHOST
