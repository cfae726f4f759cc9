#include "redaction/identities/keyed_digest.h"

#include <bit>
#include <cstddef>

namespace NVORHOST {
namespace {

constexpr std::size_t wordBytes = 8;

class TSipState {
  public:
    explicit TSipState(const std::array<std::uint64_t, 2>& key)
        : v0_(key[0] ^ 0x736F6D6570736575U),
          v1_(key[1] ^ 0x646F72616E646F6DU),
          v2_(key[0] ^ 0x6C7967656E657261U),
          v3_(key[1] ^ 0x7465646279746573U) {}

    void Absorb(std::uint64_t word) {
        v3_ ^= word;
        Round();
        Round();
        v0_ ^= word;
    }

    std::uint64_t Finish() {
        v2_ ^= 0xFFU;
        for (int round = 0; round < 4; ++round) {
            Round();
        }
        return v0_ ^ v1_ ^ v2_ ^ v3_;
    }

  private:
    void Round() {
        v0_ += v1_;
        v1_ = std::rotl(v1_, 13) ^ v0_;
        v0_ = std::rotl(v0_, 32);
        v2_ += v3_;
        v3_ = std::rotl(v3_, 16) ^ v2_;
        v0_ += v3_;
        v3_ = std::rotl(v3_, 21) ^ v0_;
        v2_ += v1_;
        v1_ = std::rotl(v1_, 17) ^ v2_;
        v2_ = std::rotl(v2_, 32);
    }

    std::uint64_t v0_, v1_, v2_, v3_;
};

// Reads a little-endian word; missing bytes count as zero.
std::uint64_t ReadWord(std::string_view bytes) {
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < bytes.size() && i < wordBytes; ++i) {
        word |= std::uint64_t{static_cast<std::uint8_t>(bytes[i])} << (wordBytes * i);
    }
    return word;
}

}  // namespace

std::uint64_t KeyedDigest(const std::array<std::uint64_t, 2>& key, std::string_view bytes) {
    TSipState state(key);
    const std::uint64_t length = bytes.size();
    for (; bytes.size() >= wordBytes; bytes.remove_prefix(wordBytes)) {
        state.Absorb(ReadWord(bytes));
    }
    state.Absorb(ReadWord(bytes) | length << 56);
    return state.Finish();
}

}  // namespace NVORHOST
