// The bytes of a document and the kind of their content.
//
// Failure language: NVORHOST::TDocumentError, whose message is one line, "FILE: cause".
#pragma once

#include "documents/document_file.h"
#include "inventory/read/content.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace NINVENTORY {

/// The largest document in bytes, decompressed.
inline constexpr std::uint64_t maxDocumentBytes = std::uint64_t{4} << 30;

/// A document that is open for reading and whose kind is known.
class TDocumentInput {
  public:
    /// Opens a file, which may be compressed with gzip; "-" is standard input.
    /// Errors: throws TDocumentError if the file cannot be read.
    explicit TDocumentInput(const std::string& path);
    /// Reads from memory. `name` replaces the file name in messages, and `bytes`, which may be compressed,
    /// must outlive this object.
    TDocumentInput(const std::string& name, std::string_view bytes);

    const std::string& GetName() const { return name_; }
    EContent GetContent() const { return content_; }
    /// Returns the next bytes; none at the end. Errors: as the constructor.
    std::string_view Read();
    /// Reads the rest. Errors: as the constructor, and if it is longer than `limit`.
    std::string ReadAll(std::size_t limit);

  private:
    void Recognize();

    std::string name_;
    NVORHOST::TDocumentFile file_;
    EContent content_ = EContent::unknown;
    std::string start_;  // read to recognise the content, and not yet returned
    bool isStartReturned_ = false;
};

}  // namespace NINVENTORY
