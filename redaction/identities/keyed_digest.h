// HMAC-SHA256: a digest that cannot be computed or reversed without its key. The library is linked into a
// module of its own, so that only runs that redact something load it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

namespace NVORHOST {

using TDigestKey = std::array<std::uint64_t, 4>;
using TDigest = std::array<std::uint8_t, 32>;

/// Computes digests with one key.
class IKeyedDigest {
  public:
    virtual ~IKeyedDigest() = default;

    /// Returns the digest of `bytes`. Not for two threads at a time.
    virtual TDigest Compute(std::string_view bytes) = 0;
};

/// Returns the digests of a key, whose words are used with the least significant byte first. The first call
/// loads the module. Errors: throws std::runtime_error if it cannot be loaded.
/// Source: RFC 2104, FIPS 180-4.
std::shared_ptr<IKeyedDigest> MakeKeyedDigest(const TDigestKey& key);

}  // namespace NVORHOST
