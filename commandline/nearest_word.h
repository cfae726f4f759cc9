// Suggests the known word that a misspelt word resembles.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Finds the known word with the smallest edit distance to `word`: insertions, deletions, replacements and
/// swaps of neighbouring characters. A known word that starts with `word` counts as distance 1. Leading
/// dashes are ignored.
/// Absent: nullopt if no known word is near enough.
std::optional<std::string> FindNearest(std::string_view word, std::span<const std::string> known);

/// Returns ": did you mean NEAREST?", or "" if no known word is near enough.
std::string DidYouMean(std::string_view word, std::span<const std::string> known);

}  // namespace NVORHOST
