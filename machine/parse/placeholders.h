// Placeholder texts that firmware vendors ship in place of a value. Readers treat them as absent.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// True for an empty text; a known filler, in any case and some with any number ("SerNum0", "SerNum01"); one
/// repeated character out of "0", "F", "X", "-", ".", "*", "?" and blank; 8 or more digits that count up from
/// 0 or 1 ("0123456789"); and serial numbers that all drives of a model share. Blanks around the text are
/// ignored.
bool IsPlaceholder(std::string_view text);

/// Returns `text`, or nullopt if it is a placeholder.
std::optional<std::string> WithoutPlaceholder(std::optional<std::string> text);

}  // namespace NVORHOST
