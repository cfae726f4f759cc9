// Patterns with a wildcard.
#pragma once

#include <string_view>

namespace NVORHOST {

/// True if `text` matches `pattern` as a whole. Each "*" in `pattern` matches any part of `text`, including
/// the empty part; every other character matches itself.
bool MatchesWildcards(std::string_view pattern, std::string_view text);

}  // namespace NVORHOST
