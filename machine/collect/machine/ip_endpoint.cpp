// KELSG_IPProtocolEndpoint: one instance per address of an interface, sorted by interface name, IPv4 before
// IPv6, and address. A tree captured without the answers of system calls identifies the interfaces of IPv4
// addresses by its routes; an address that no route covers has no interface.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/operational_status.h"
#include "machine/parse/proc_net.h"

#include <algorithm>
#include <tuple>

namespace NVORHOST {
namespace {

struct TIpEndpoint {
    std::optional<std::string> elementName, description, ipv4Address, ipv6Address;
    std::optional<TOperationalStatus> operationalStatus;
};

constexpr TPropertyRow<TIpEndpoint> ipEndpointRows[] = {
    {"ElementName", &TIpEndpoint::elementName},
    {"Description", &TIpEndpoint::description},
    {"OperationalStatus", &TIpEndpoint::operationalStatus},
    {"IPv4Address", &TIpEndpoint::ipv4Address},
    {"IPv6Address", &TIpEndpoint::ipv6Address},
};

constexpr TCimClass<TIpEndpoint> ipEndpointClass{"KELSG_IPProtocolEndpoint", ipEndpointRows};
constexpr const IClassDeclaration* classes[] = {&ipEndpointClass};

constexpr TSourcePattern sourcePatterns[] = {
    "/proc/net/fib_trie",
    "/proc/net/route",
    "/proc/net/if_inet6",
    "/sys/class/net/*/operstate",
};

using TAddresses = std::vector<TInterfaceAddress>;

// Reads the addresses of a captured tree without the answers of system calls.
TAddresses ReadAddressesOfTree(const ISystemFiles& files) {
    TAddresses addresses;
    const auto routes = ParseIpv4Routes(files.ReadText("/proc/net/route").value);
    for (const std::string& address : ParseLocalIpv4Addresses(files.ReadText("/proc/net/fib_trie").value)) {
        addresses.push_back({FindInterface(routes, address).value_or(""), address});
    }
    for (const TIpv6Interface& row : ParseIpv6Interfaces(files.ReadText("/proc/net/if_inet6").value)) {
        addresses.push_back({row.interface, row.address});
    }
    return addresses;
}

// The kernel lists an address once per network that it belongs to.
void SortAndDeduplicate(TAddresses& addresses) {
    const auto order = [](const TInterfaceAddress& row) {
        return std::make_tuple(std::string_view(row.interface), row.address.size(),
                               std::string_view(row.address));
    };
    std::ranges::sort(addresses, {}, order);
    const auto isSame = [&](const auto& a, const auto& b) { return order(a) == order(b); };
    addresses.erase(std::unique(addresses.begin(), addresses.end(), isSame), addresses.end());
}

TIpEndpoint MakeEndpoint(const ISystemFiles& files, const TInterfaceAddress& row, const std::string& text) {
    const bool isIpv4 = row.address.size() == ipv4Bytes;
    TIpEndpoint endpoint;
    endpoint.description = isIpv4 ? "IPv4 address" : "IPv6 address";
    (isIpv4 ? endpoint.ipv4Address : endpoint.ipv6Address) = text;
    if (row.interface.empty()) {
        endpoint.elementName = text;
        return endpoint;
    }
    endpoint.elementName = row.interface + " " + text;
    *endpoint.description += " of " + row.interface;
    const auto state = ReadAttribute(files, "/sys/class/net/" + row.interface + "/operstate");
    endpoint.operationalStatus = FindInterfaceStatus(state.value_or(""));
    return endpoint;
}

void CollectIpEndpoints(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    const auto answer = collection.GetCalls().ReadInterfaceAddresses();
    TAddresses addresses = answer ? *answer : ReadAddressesOfTree(files);
    SortAndDeduplicate(addresses);
    for (const TInterfaceAddress& row : addresses) {
        if (const auto text = FormatIpAddress(row.address)) {
            collection.Commit(ipEndpointClass, MakeEndpoint(files, row, *text));
        }
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
