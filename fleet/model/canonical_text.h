// Values as bytes from which a digest is made: different values give different bytes.
#pragma once

#include "fleet/model/digest.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace NFLEET {

/// Appends texts with their lengths and numbers in eight bytes.
class TCanonicalText {
  public:
    void Add(std::string_view text) {
        Add(text.size());
        bytes_.append(text);
    }
    void Add(std::uint64_t number) {
        constexpr unsigned bitsOfByte = 8;
        std::array<char, sizeof(number)> bytes{};
        for (unsigned byte = 0; byte < sizeof(number); ++byte) {
            bytes[byte] = static_cast<char>(number >> (byte * bitsOfByte) & 0xFFU);
        }
        bytes_.append(bytes.data(), bytes.size());
    }
    /// Appends the bytes of a digest, whose number is always the same.
    void Add(const TDigest& digest) { bytes_.append(digest.GetView()); }

    TDigest GetDigest() const { return MakeDigest(bytes_); }
    std::string_view GetBytes() const { return bytes_; }

  private:
    std::string bytes_;
};

}  // namespace NFLEET
