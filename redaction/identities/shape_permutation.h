// Keyed permutations of all texts of one shape. With one key, a text always maps to the same
// other text, and different texts map to different ones.
#pragma once

#include "redaction/identities/keyed_digest.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace NVORHOST {

/// The shape of texts: how many symbols each position may have.
struct TShape {
    std::string name;                   ///< different for shapes whose permutations must be independent
    std::vector<std::uint8_t> radices;  ///< at least 2 positions, each with at least 2 symbols
};

/// A text: the number of the symbol at each position.
using TSymbols = std::vector<std::uint8_t>;
using TIsAllowed = std::function<bool(const TSymbols&)>;

/// Maps an allowed text to an allowed text, one-to-one. None maps to itself unless it is the only one.
/// Shape: a Feistel network with the digest as round function, and one step on its cycle of all texts,
///        repeated until the result is allowed.
TSymbols PermuteSymbols(IKeyedDigest& digest, const TShape& shape, const TSymbols& symbols,
                        const TIsAllowed& isAllowed);

/// Maps an allowed number to an allowed number, one-to-one. None maps to itself unless it is the only one.
/// All allowed numbers are less than `limit`; `name` is that of a shape.
std::uint32_t PermuteNumber(IKeyedDigest& digest, const std::string& name, std::uint32_t number,
                            std::uint32_t limit, const std::function<bool(std::uint32_t)>& isAllowed);

}  // namespace NVORHOST
