// Internet addresses as bytes in network order, 4 or 16 of them, and as the text people write.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

inline constexpr std::size_t ipv4Bytes = 4;
inline constexpr std::size_t ipv6Bytes = 16;

/// "192.0.2.1" for 4 bytes, RFC 5952 text for 16. Absent for any other number of bytes.
std::optional<std::string> FormatIpAddress(std::string_view bytes);

/// The 4 bytes of dotted decimal text. Absent for anything else, leading zeros included.
std::optional<std::string> ParseIpv4Address(std::string_view text);

/// The 16 bytes of IPv6 text in any of its forms. Absent for anything else.
std::optional<std::string> ParseIpv6Address(std::string_view text);

}  // namespace NVORHOST
