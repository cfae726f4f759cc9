// Parses the files of /proc/net with the addresses of the machine. They name the interface of each IPv6
// address but not of an IPv4 address, which usually follows from the routes.
#pragma once

#include "machine/parse/ip_address.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Returns the IPv4 addresses of the machine, 4 bytes each, sorted and without duplicates: the leaves of
/// /proc/net/fib_trie with a line "/32 host LOCAL". Local networks such as 127.0.0.0/8 are not among them.
std::vector<std::string> ParseLocalIpv4Addresses(std::string_view fibTrie);

struct TIpv6Interface {
    std::string interface;
    std::string address;  ///< 16 bytes
};

/// Returns the lines of /proc/net/if_inet6 in order. Malformed lines are skipped.
std::vector<TIpv6Interface> ParseIpv6Interfaces(std::string_view ifInet6);

struct TIpv4Route {
    std::string interface;
    std::string destination;  ///< 4 bytes
    std::string mask;         ///< 4 bytes
    bool hasGateway = false;
};

/// Returns the lines of /proc/net/route in order, without the header line. Malformed lines are skipped.
/// Source: Linux, net/ipv4/fib_trie.c; each number is the value that a little-endian processor reads from the
///          4 bytes.
std::vector<TIpv4Route> ParseIpv4Routes(std::string_view route);

/// Returns the interface whose network contains `address`: that of the most specific route without a gateway,
/// or "lo" for 127.0.0.0/8; nullopt if no route matches or if several interfaces share the network.
std::optional<std::string> FindInterface(const std::vector<TIpv4Route>& routes, std::string_view address);

}  // namespace NVORHOST
