#include "machine/parse/proc_net.h"

#include "text/hex.h"
#include "text/lines.h"
#include "text/numbers.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace NVORHOST {
namespace {

// The kernel prints the 4 bytes as the number that a little-endian processor reads from them.
std::optional<std::string> ParseLittleEndianWord(std::string_view digits) {
    auto bytes = digits.size() == 2 * ipv4Bytes ? ParseHex(digits) : std::nullopt;
    if (bytes) {
        std::ranges::reverse(*bytes);
    }
    return bytes;
}

std::optional<TIpv4Route> ParseRoute(std::string_view line) {
    TIpv4Route route;
    route.interface = TakeWord(line);
    const auto destination = ParseLittleEndianWord(TakeWord(line));
    const auto gateway = TakeWord(line);
    const auto flags = ParseHexNumber<std::uint16_t>(TakeWord(line));
    for (int skipped = 0; skipped < 3; ++skipped) {  // RefCnt, Use, Metric
        (void)TakeWord(line);                        // no property comes from them
    }
    const auto mask = ParseLittleEndianWord(TakeWord(line));
    if (!destination || gateway.empty() || !flags || !mask) {
        return std::nullopt;
    }
    constexpr std::uint16_t gatewayFlag = 0x0002;  // RTF_GATEWAY
    route.destination = *destination;
    route.mask = *mask;
    route.hasGateway = (*flags & gatewayFlag) != 0;
    return route;
}

bool IsWithin(std::string_view address, const TIpv4Route& route) {
    for (std::size_t i = 0; i < ipv4Bytes; ++i) {
        if (((address[i] ^ route.destination[i]) & route.mask[i]) != 0) {
            return false;
        }
    }
    return true;
}

constexpr std::string_view everyNetwork{"\0\0\0\0", ipv4Bytes};  // mask of the default route

}  // namespace

std::vector<std::string> ParseLocalIpv4Addresses(std::string_view fibTrie) {
    std::vector<std::string> addresses;
    std::optional<std::string> leaf;
    ForEachLine(fibTrie, [&](std::string_view line) {
        const std::string_view first = TakeWord(line);
        if (first == "|--") {
            leaf = ParseIpv4Address(TakeWord(line));
        } else if (first == "/32" && TakeWord(line) == "host" && TakeWord(line) == "LOCAL" && leaf) {
            addresses.push_back(*leaf);
        }
    });
    // The kernel prints the tables "main" and "local" one after the other; both may be the same table.
    std::sort(addresses.begin(), addresses.end());
    addresses.erase(std::unique(addresses.begin(), addresses.end()), addresses.end());
    return addresses;
}

std::vector<TIpv6Interface> ParseIpv6Interfaces(std::string_view ifInet6) {
    std::vector<TIpv6Interface> interfaces;
    ForEachLine(ifInet6, [&](std::string_view line) {
        const auto address = ParseHex(TakeWord(line));
        for (int skipped = 0; skipped < 4; ++skipped) {  // index, prefix length, scope, flags
            (void)TakeWord(line);                        // no property comes from them
        }
        const std::string_view name = TakeWord(line);
        if (address && address->size() == ipv6Bytes && !name.empty()) {
            interfaces.push_back({std::string(name), *address});
        }
    });
    return interfaces;
}

std::vector<TIpv4Route> ParseIpv4Routes(std::string_view route) {
    std::vector<TIpv4Route> routes;
    ForEachLine(route, [&](std::string_view line) {
        if (auto parsed = ParseRoute(line)) {
            routes.push_back(std::move(*parsed));
        }
    });
    return routes;
}

std::optional<std::string> FindInterface(const std::vector<TIpv4Route>& routes, std::string_view address) {
    constexpr char loopbackNetwork = 127;
    if (address.size() != ipv4Bytes) {
        return std::nullopt;
    }
    if (address.front() == loopbackNetwork) {
        return "lo";
    }
    const TIpv4Route* best = nullptr;
    bool isAmbiguous = false;
    for (const TIpv4Route& route : routes) {
        if (route.hasGateway || route.mask == everyNetwork || !IsWithin(address, route)) {
            continue;
        }
        // A mask is a run of ones from the left, so the longer mask is the greater byte string.
        if (best == nullptr || route.mask > best->mask) {
            best = &route;
            isAmbiguous = false;
        } else if (route.mask == best->mask && route.interface != best->interface) {
            isAmbiguous = true;
        }
    }
    return best == nullptr || isAmbiguous ? std::nullopt : std::optional(best->interface);
}

}  // namespace NVORHOST
