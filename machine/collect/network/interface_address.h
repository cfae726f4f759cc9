// The addresses of the network interfaces, and the key of each in KELSG_IPProtocolEndpoint.
#pragma once

#include "machine/collect/frame/source_patterns.h"
#include "machine/system/system_calls.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

class TCollection;

inline constexpr std::string_view ipEndpointClassName = "KELSG_IPProtocolEndpoint";

/// An address of an interface. Without the answers of system calls, the interface of an IPv4 address that no
/// route covers is absent.
struct TAddressPlace {
    std::optional<std::string> interface;
    std::string bytes;  ///< 4 or 16 in network order
    std::string text;   ///< "10.0.0.5"
    std::string name;   ///< ElementName of its instance: interface and address
};

/// Returns every address, sorted by interface, IPv4 before IPv6, and address, without duplicates. They are
/// read at the first call.
const std::vector<TAddressPlace>& GetAddressPlaces(TCollection& collection);

/// The paths that GetAddressPlaces may access.
inline constexpr std::array<TSourcePattern, 3> addressSources{
    "/proc/net/fib_trie",
    "/proc/net/route",
    "/proc/net/if_inet6",
};

}  // namespace NVORHOST
