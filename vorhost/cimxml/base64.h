// Base64 (RFC 4648, 4) for the values that XML text cannot carry.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// With padding, without line ends.
std::string EncodeBase64(std::string_view bytes);

/// Absent: nullopt for anything but what `EncodeBase64` gives: other characters, wrong padding, stray bits.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace NVORHOST
