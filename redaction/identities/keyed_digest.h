// SipHash-2-4: a short digest that cannot be computed or reversed without its key.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace NVORHOST {

/// Returns the digest of `bytes`.
/// Source: Aumasson and Bernstein, SipHash: a fast short-input PRF, 2012.
std::uint64_t KeyedDigest(const std::array<std::uint64_t, 2>& key, std::string_view bytes);

}  // namespace NVORHOST
