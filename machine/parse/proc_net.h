// What /proc/net tells of the addresses of the machine. The kernel's texts name the interface of an IPv6
// address, but not that of an IPv4 address; routes tell most of those.
#pragma once

#include "machine/parse/ip_address.h"

#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// The IPv4 addresses of the machine itself, 4 bytes each, sorted, each once: the leaves of
/// /proc/net/fib_trie with a "/32 host LOCAL" line. Local networks, such as 127.0.0.0/8, are none.
std::vector<std::string> ParseLocalIpv4Addresses(std::string_view fibTrie);

struct TIpv6Interface {
    std::string interface;
    std::string address;  ///< 16 bytes
};

/// The lines of /proc/net/if_inet6 in order; lines of another form are skipped.
std::vector<TIpv6Interface> ParseIpv6Interfaces(std::string_view ifInet6);

struct TIpv4Route {
    std::string interface;
    std::string destination;  ///< 4 bytes
    std::string mask;         ///< 4 bytes
    bool hasGateway = false;
};

/// The lines of /proc/net/route in order, without its head; lines of another form are skipped.
/// Source: the hexadecimal numbers are the bytes read as little-endian words, as on every machine of ours.
std::vector<TIpv4Route> ParseIpv4Routes(std::string_view route);

/// The interface whose own network `address` is in: that of the most specific route without a gateway, "lo"
/// for 127.0.0.0/8. Empty when no route tells, or when several say different things.
std::string FindInterface(const std::vector<TIpv4Route>& routes, std::string_view address);

}  // namespace NVORHOST
