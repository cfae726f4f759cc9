#include "fleet/model/digest.h"

#include "text/hex.h"

#include <openssl/sha.h>

#include <algorithm>
#include <cstring>
#include <random>

namespace NFLEET {
namespace {

std::uint64_t MakeKey() {
    std::random_device device;
    return (std::uint64_t{device()} << 32) | device();
}

// Spreads every bit over all others: the finalizer of MurmurHash3.
std::uint64_t Mix(std::uint64_t bits) {
    bits = (bits ^ (bits >> 33)) * 0xFF51AFD7ED558CCDU;
    bits = (bits ^ (bits >> 33)) * 0xC4CEB9FE1A85EC53U;
    return bits ^ (bits >> 33);
}

}  // namespace

std::size_t TDigestHash::operator()(const TDigest& digest) const {
    static const std::array<std::uint64_t, 2> keys = {MakeKey(), MakeKey()};
    std::array<std::uint64_t, 2> halves{};
    static_assert(sizeof(halves) == TDigest::size);
    std::memcpy(halves.data(), digest.bytes.data(), TDigest::size);
    return Mix(Mix(halves[0] ^ keys[0]) ^ halves[1] ^ keys[1]);
}

TDigest MakeDigest(std::string_view bytes) {
    std::array<unsigned char, SHA256_DIGEST_LENGTH> whole{};
    ::SHA256(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), whole.data());
    TDigest digest;
    std::copy_n(whole.begin(), TDigest::size, digest.bytes.begin());
    return digest;
}

std::string ToText(const TDigest& digest) {
    return NVORHOST::ToHex(digest.GetView(), NVORHOST::EHexCase::upper);
}

std::optional<TDigest> ParseDigest(std::string_view text) {
    if (text.size() != 2 * TDigest::size) {
        return std::nullopt;
    }
    const auto bytes = NVORHOST::ParseHex(text);
    return bytes ? FromBytes(*bytes) : std::nullopt;
}

std::optional<TDigestSpan> ParseDigestStart(std::string_view digits) {
    constexpr std::size_t length = 2 * TDigest::size;
    if (digits.empty() || digits.size() > length) {
        return std::nullopt;
    }
    const std::string rest(length - digits.size(), '0');
    const auto first = ParseDigest(std::string(digits) + rest);
    const auto last = ParseDigest(std::string(digits) + std::string(rest.size(), 'F'));
    return first && last ? std::optional(TDigestSpan{*first, *last}) : std::nullopt;
}

std::optional<TDigest> FromBytes(std::string_view bytes) {
    if (bytes.size() != TDigest::size) {
        return std::nullopt;
    }
    TDigest digest;
    std::memcpy(digest.bytes.data(), bytes.data(), TDigest::size);
    return digest;
}

}  // namespace NFLEET
