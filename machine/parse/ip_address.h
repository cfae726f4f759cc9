// Internet addresses, as 4 or 16 bytes in network order and as text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

inline constexpr std::size_t ipv4Bytes = 4;
inline constexpr std::size_t ipv6Bytes = 16;

/// Returns "192.0.2.1" for 4 bytes and the text of RFC 5952 for 16; nullopt for any other size.
std::optional<std::string> FormatIpAddress(std::string_view bytes);

/// Parses a dotted decimal address into 4 bytes; nullopt if it is malformed. Leading zeros are malformed.
std::optional<std::string> ParseIpv4Address(std::string_view text);

/// Parses any text form of an IPv6 address into 16 bytes; nullopt if it is malformed.
std::optional<std::string> ParseIpv6Address(std::string_view text);

}  // namespace NVORHOST
