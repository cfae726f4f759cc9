// Writes a document line by line. Each line reaches the stream in one write and one flush, so that a document
// that ends early ends after a whole line.
#pragma once

#include <cstddef>
#include <ostream>
#include <string_view>
#include <vector>

/// Writes lines to a caller's stream.
/// Errors: as `std::ostream::write` and `flush` report them. A failed stream swallows the lines; what its
///         buffer throws passes to the caller only if the stream's `exceptions` includes `badbit`.
class TLineOutput {
  public:
    /// `out` is non-owning and must outlive this object. It is never closed.
    explicit TLineOutput(std::ostream& out) : out_(out) {}
    TLineOutput(const TLineOutput&) = delete;
    TLineOutput& operator=(const TLineOutput&) = delete;

    /// Writes the pieces, each convertible to std::string_view, as one line.
    template <typename... TPieces>
    void WriteLine(const TPieces&... pieces) {
        char* to = MakeRoom((std::string_view(pieces).size() + ...));
        ((to += std::string_view(pieces).copy(to, std::string_view::npos)), ...);
        FinishLine(to);
    }

    /// Returns room for a line of up to `size` characters, which the caller fills and hands to `FinishLine`.
    char* MakeRoom(std::size_t size) {
        if (line_.size() <= size) {
            line_.resize(2 * size + 1);
        }
        return line_.data();
    }
    /// Writes the line that fills the room up to `end`, with a line feed.
    void FinishLine(char* end);

    /// Writes `text` at once, without ending the line.
    void WritePiece(std::string_view text);

  private:
    void MarkBad();
    void MarkBadOrRethrow();

    std::ostream& out_;
    std::vector<char> line_;  // reused, so that a line costs no allocation
};
