// Base64 (RFC 4648, section 4), for values that XML text cannot represent.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Encodes with padding and without line ends.
std::string EncodeBase64(std::string_view bytes);

/// Decodes the output of `EncodeBase64`.
/// Absent: nullopt for any other text: invalid characters, wrong padding, or unused bits that are not zero.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace NVORHOST
