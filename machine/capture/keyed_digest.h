// SipHash-2-4: a short digest that nobody can compute or undo without its key.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace NVORHOST {

/// Source: Aumasson and Bernstein, SipHash: a fast short-input PRF, 2012.
std::uint64_t KeyedDigest(const std::array<std::uint64_t, 2>& key, std::string_view bytes);

}  // namespace NVORHOST
