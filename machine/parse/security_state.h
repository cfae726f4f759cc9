// Parses the kernel's and the firmware's files about protection.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Parses the EFI variable SecureBoot: four bytes of attributes and the value.
/// Absent: nullopt for another size, and for a value other than 0 and 1.
std::optional<bool> ParseSecureBoot(std::string_view bytes);

/// Returns the chosen word of a list such as "none [integrity] confidentiality".
/// Absent: nullopt if no word, or more than one, is in brackets.
std::optional<std::string> ParseChosenWord(std::string_view text);

}  // namespace NVORHOST
