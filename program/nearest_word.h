// Guesses which word a user meant.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace NVORHOST {

/// The known word that `word` was probably meant to be: one that starts with it, else the one that the fewest
/// insertions, deletions, replacements and swaps of neighbours make of it. Absent: empty when none is near.
std::string FindNearest(std::string_view word, std::span<const std::string> known);

/// ": did you mean NEAREST?", or nothing when no known word is near.
std::string DidYouMean(std::string_view word, std::span<const std::string> known);

}  // namespace NVORHOST
