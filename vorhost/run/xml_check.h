// Checks whether a document is well-formed XML. The plug-in writes some values unescaped, as the documents'
// format has it, so a document is XML only if its values allow it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Reads elements, attributes, references and text, as inventory documents have them: neither comments nor
/// CDATA sections nor document types. Character sets are not checked beyond control bytes.
class TXmlCheck {
  public:
    /// The next line, without its end.
    void ReadLine(std::string_view line);

    struct TFault {
        std::size_t line;    ///< 1-based
        std::size_t offset;  ///< within the line, in bytes
    };

    /// Where the document stops being well-formed; nullopt while it is.
    std::optional<TFault> GetFault() const { return fault_; }

  private:
    enum class EState {
        text,
        reference,
        markup,
        declaration,
        startName,
        endName,
        inTag,
        emptyTag,
        attribute,
        value
    };

    bool Read(char byte);
    bool ReadText(char byte);
    bool ReadReference(char byte);
    bool ReadMarkup(char byte);
    bool ReadStartName(char byte);
    bool ReadEndName(char byte);
    bool ReadTag(char byte);
    bool ReadAttribute(char byte);
    bool ReadValue(char byte);
    bool Enter(EState state);

    EState state_ = EState::text;
    EState outer_ = EState::text;  // where a reference goes back to
    std::string word_;             // name or reference under way
    std::vector<std::string> attributes_;
    std::vector<std::string> elements_;  // open ones
    bool isValueDue_ = false;            // after the name of an attribute
    bool isBlankDue_ = false;            // after the value of one, unless the tag ends
    std::size_t lines_ = 0;
    std::optional<TFault> fault_;
};

}  // namespace NVORHOST
