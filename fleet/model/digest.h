// 128 bits that stand for longer content: machines, resources, versions and documents are known by them.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace NFLEET {

/// A 128-bit identifier: the start of a SHA-256 digest, or the identifier of a resource.
struct TDigest {
    static constexpr std::size_t size = 16;

    std::array<std::uint8_t, size> bytes{};

    auto operator<=>(const TDigest&) const = default;

    /// Returns the bytes as text of 16 characters, valid as long as this object.
    std::string_view GetView() const { return {reinterpret_cast<const char*>(bytes.data()), size}; }
};

/// Hashes all bytes with a key that is different in each process: identifiers of resources come from
/// documents, which could otherwise choose those that collide, and real ones often have a half in common.
struct TDigestHash {
    std::size_t operator()(const TDigest& digest) const;
};

/// Returns the first 128 bits of the SHA-256 digest of `bytes`.
TDigest MakeDigest(std::string_view bytes);

/// Returns 32 upper-case hexadecimal digits.
std::string ToText(const TDigest& digest);

/// Parses 32 hexadecimal digits of either case; nullopt for any other text.
std::optional<TDigest> ParseDigest(std::string_view text);

/// The digests from `first` up to and including `last`.
struct TDigestSpan {
    TDigest first;
    TDigest last;

    bool operator==(const TDigestSpan&) const = default;
};

/// Returns the digests whose text begins with these hexadecimal digits of either case; nullopt for a text
/// that is empty, too long or has other characters.
std::optional<TDigestSpan> ParseDigestStart(std::string_view digits);

/// Takes 16 bytes, as GetView returns them; nullopt for another number of bytes.
std::optional<TDigest> FromBytes(std::string_view bytes);

}  // namespace NFLEET
