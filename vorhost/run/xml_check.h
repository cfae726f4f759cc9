// Checks whether a document is well-formed XML. The format of the documents requires some values to be
// written unescaped, so some values make a document malformed.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Checks the subset of XML that occurs in inventory documents: elements, attributes, references and text.
/// Comments, CDATA sections and document types count as malformed. Of the character rules, only the ban on
/// control characters is checked.
class TXmlCheck {
  public:
    /// Checks the next line, which is passed without its line end.
    void AddLine(std::string_view line);

    struct TFault {
        std::size_t line;    ///< 1-based
        std::size_t offset;  ///< bytes from the start of the line
    };

    /// The first place where the document is not well-formed; nullopt if there is none so far.
    std::optional<TFault> FindFault() const { return fault_; }

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

    // These functions return false if the byte is not allowed in the current state.
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
    EState outer_ = EState::text;          // state after the current reference
    std::string word_;                     // beginning of the current name or reference
    std::vector<std::string> attributes_;  // names of the current tag
    std::vector<std::string> elements_;    // names of the open elements, outermost first
    bool isValueDue_ = false;              // after an attribute name and "="
    bool isBlankDue_ = false;  // after an attribute value: a blank or the end of the tag must follow
    std::size_t lines_ = 0;
    std::optional<TFault> fault_;
};

}  // namespace NVORHOST
