#include "fleet/model/digest.h"

#include "text/hex.h"

#include <openssl/sha.h>

#include <algorithm>

namespace NFLEET {

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

std::optional<TDigest> FromBytes(std::string_view bytes) {
    if (bytes.size() != TDigest::size) {
        return std::nullopt;
    }
    TDigest digest;
    std::memcpy(digest.bytes.data(), bytes.data(), TDigest::size);
    return digest;
}

}  // namespace NFLEET
