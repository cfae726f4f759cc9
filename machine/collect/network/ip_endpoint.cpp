// KELSG_IPProtocolEndpoint: one instance per address of an interface, sorted by interface name, IPv4 before
// IPv6, and address. A tree captured without the answers of system calls identifies the interfaces of IPv4
// addresses by its routes; an address that no route covers has no interface.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/operational_status.h"
#include "machine/collect/network/interface_address.h"
#include "machine/parse/ip_address.h"

#include <array>

namespace NVORHOST {
namespace {

struct TIpEndpoint {
    std::optional<std::string> elementName, description, ipv4Address, ipv6Address;
    std::optional<TOperationalStatus> operationalStatus;
    TInstancePlace place{};
};

constexpr TPropertyRow<TIpEndpoint> ipEndpointRows[] = {
    {"ElementName", &TIpEndpoint::elementName,
     "call getifaddrs; /proc/net/fib_trie; /proc/net/if_inet6; /proc/net/route"},
    {"Description", &TIpEndpoint::description,
     "call getifaddrs; /proc/net/fib_trie; /proc/net/if_inet6; /proc/net/route"},
    {"OperationalStatus", &TIpEndpoint::operationalStatus, "@/operstate"},
    {"IPv4Address", &TIpEndpoint::ipv4Address, "call getifaddrs; /proc/net/fib_trie"},
    {"IPv6Address", &TIpEndpoint::ipv6Address, "call getifaddrs; /proc/net/if_inet6"},
};

constexpr TCimClass<TIpEndpoint> ipEndpointClass{ipEndpointClassName, ipEndpointRows};
constexpr const IClassDeclaration* classes[] = {&ipEndpointClass};

constexpr auto sourcePatterns =
    Join(addressSources, std::array<TSourcePattern, 1>{"/sys/class/net/*/operstate"});

TIpEndpoint MakeEndpoint(const ISystemFiles& files, const TAddressPlace& place) {
    const bool isIpv4 = place.bytes.size() == ipv4Bytes;
    TIpEndpoint endpoint;
    endpoint.elementName = place.name;
    endpoint.description = isIpv4 ? "IPv4 address" : "IPv6 address";
    (isIpv4 ? endpoint.ipv4Address : endpoint.ipv6Address) = place.text;
    if (place.interface) {
        *endpoint.description += " of " + *place.interface;
        endpoint.place.folder = "/sys/class/net/" + *place.interface;
        const auto state = ReadAttribute(files, endpoint.place.folder + "/operstate");
        endpoint.operationalStatus = FindInterfaceStatus(state.value_or(""));
    }
    return endpoint;
}

void CollectIpEndpoints(TCollection& collection) {
    for (const TAddressPlace& place : GetAddressPlaces(collection)) {
        collection.Commit(ipEndpointClass, MakeEndpoint(collection.GetFiles(), place));
    }
}

}  // namespace

extern constinit const TCollector ipEndpointCollector{
    .name = "ip-endpoint",
    .description = "Addresses of the network interfaces",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectIpEndpoints,
    .isForDocuments = false,
};

}  // namespace NVORHOST
