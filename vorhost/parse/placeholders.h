// Texts that firmware vendors leave where a value belongs. They count as absent.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// True for an empty text, one of the known fillers (case and blanks around aside), a text of one repeated
/// zero, "F", "X", "-", "." or "*" character, and a counted run such as "0123456789" or "123456789".
bool IsPlaceholder(std::string_view text);

/// The text, or nothing when it is a placeholder.
std::optional<std::string> WithoutPlaceholder(std::optional<std::string> text);

}  // namespace NVORHOST
