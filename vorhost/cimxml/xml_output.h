// Text on its way into an XML document: escaped where it must be, and buffered, since documents have millions
// of small pieces.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Writes to a stream through a buffer; `Flush` writes what is left. Errors: the state of the stream.
class TXmlOutput {
  public:
    /// `out` must outlive this object.
    explicit TXmlOutput(std::ostream& out);

    /// Bytes as they are.
    void Markup(std::string_view bytes);
    /// The content of an element, such that a parser gives back the same bytes; they must be XML text.
    void Text(std::string_view text);
    /// ` name="value"`, under the same condition.
    void Attribute(std::string_view name, std::string_view value);
    /// Bytes in Base64.
    void Base64(std::string_view bytes);
    void Flush();

  private:
    std::ostream& out_;
    std::string buffer_;
};

}  // namespace NVORHOST
