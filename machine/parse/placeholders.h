// Texts that firmware vendors leave where a value belongs. They count as absent.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// True for an empty text, one of the known fillers (case and blanks around aside, some with any number:
/// "SerNum0", "SerNum01"), a text of one repeated "0", "F", "X", "-", ".", "*" or "?", digits counted up from
/// 0 or 1 such as "0123456789", eight or more, and serial numbers that every drive of a model has.
bool IsPlaceholder(std::string_view text);

/// The text, or nothing when it is a placeholder.
std::optional<std::string> WithoutPlaceholder(std::optional<std::string> text);

}  // namespace NVORHOST
