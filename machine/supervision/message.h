// Encodes numbers and texts as bytes, for messages between a run and its forked processes. Sender and
// receiver are the same program, so only the length of a message is checked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace NVORHOST {

class TMessageWriter {
  public:
    /// Writes 7 bits per byte, the lowest first; the high bit of a byte means that more bytes follow.
    void WriteNumber(std::uint64_t number);
    /// Writes the length as a number, then the bytes.
    void WriteText(std::string_view text);

    const std::string& GetBytes() const { return bytes_; }

  private:
    std::string bytes_;
};

/// Reads what a TMessageWriter wrote, in the same order.
/// Errors: throws TRunFailure if the bytes end too early.
class TMessageReader {
  public:
    /// `bytes` must outlive this object.
    explicit TMessageReader(std::string_view bytes) : bytes_(bytes) {}

    std::uint64_t ReadNumber();
    /// The result points into `bytes`.
    std::string_view ReadText();

  private:
    std::string_view bytes_;
};

}  // namespace NVORHOST
