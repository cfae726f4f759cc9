// The system-information document, whose values are not escaped: any byte may be part of a value, markup and
// line ends included. The frame is fixed, so values are what remains between its parts.
#pragma once

#include "inventory/read/document_events.h"

#include <cstddef>
#include <string_view>

namespace NINVENTORY {

/// Reads one document. A value may contain text that looks like the end of a value and the beginning of the
/// next property. Of several readings, the one counts whose resource name and identifier agree with the
/// values, which repeat several of them; the first reading counts if none agrees.
class TSystemInformationReader {
  public:
    /// `text` is the whole document and must outlive this object.
    explicit TSystemInformationReader(std::string_view text) : text_(text) {}

    /// Errors: throws TDocumentCause for a document that is malformed or truncated.
    void Read(IDocumentEvents& events);

    /// The 1-based line that Read has reached.
    int GetLine() const;

  private:
    void Expect(std::string_view literal);
    std::string_view TakeUntil(std::string_view end);

    std::string_view text_;
    std::size_t at_ = 0;
};

}  // namespace NINVENTORY
