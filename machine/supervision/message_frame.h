// Frames that separate the messages on a pipe.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// A kind, whose meaning is the caller's, and the bytes of a message.
struct TMessageFrame {
    unsigned char kind = 0;
    std::string bytes;

    bool operator==(const TMessageFrame&) const = default;
};

/// Encodes a frame: the number of bytes (32 bits, native order), the kind, the bytes.
std::string EncodeFrame(unsigned char kind, std::string_view bytes);

/// Splits a stream of encoded frames, which arrives in pieces of any size.
class TFrameReader {
  public:
    /// Adds the next piece of the stream; returns the frames that are complete with it.
    std::vector<TMessageFrame> Add(std::string_view piece);

  private:
    std::string unread_;  // the beginning of an incomplete frame
};

}  // namespace NVORHOST
