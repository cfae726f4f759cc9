// Numbers and texts as bytes, for messages between a run and the processes that it forks off. Both ends are
// the same program, so that nothing but the length of a message is checked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace NVORHOST {

class TMessageWriter {
  public:
    /// 7 bits a byte, the lowest first; the highest bit marks that more follow.
    void WriteNumber(std::uint64_t number);
    /// The length as a number, then the bytes.
    void WriteText(std::string_view text);

    const std::string& GetBytes() const { return bytes_; }

  private:
    std::string bytes_;
};

/// Reads what a TMessageWriter wrote, in the same order. Errors: throws TRunFailure at the end of the bytes.
class TMessageReader {
  public:
    /// `bytes` must outlive this object.
    explicit TMessageReader(std::string_view bytes) : bytes_(bytes) {}

    std::uint64_t ReadNumber();
    /// Valid as long as the bytes are.
    std::string_view ReadText();

  private:
    std::string_view bytes_;
};

}  // namespace NVORHOST
