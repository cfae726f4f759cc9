#include "machine/collect/network/interface_address.h"

#include "machine/collect/frame/collection.h"
#include "machine/parse/proc_net.h"

#include <algorithm>
#include <functional>
#include <tuple>
#include <utility>

namespace NVORHOST {
namespace {

using TAddresses = std::vector<TInterfaceAddress>;

// Reads the addresses of a captured tree without the answers of system calls.
TAddresses ReadAddressesOfTree(const ISystemFiles& files) {
    TAddresses addresses;
    const auto routes = ParseIpv4Routes(files.ReadText("/proc/net/route").value);
    for (const std::string& address : ParseLocalIpv4Addresses(files.ReadText("/proc/net/fib_trie").value)) {
        addresses.push_back({FindInterface(routes, address), address});
    }
    for (const TIpv6Interface& row : ParseIpv6Interfaces(files.ReadText("/proc/net/if_inet6").value)) {
        addresses.push_back({row.interface, row.address});
    }
    return addresses;
}

// The kernel lists an address once per network that it belongs to.
void SortAndDeduplicate(TAddresses& addresses) {
    const auto order = [](const TInterfaceAddress& row) {
        return std::make_tuple(std::cref(row.interface), row.address.size(), std::string_view(row.address));
    };
    std::ranges::sort(addresses, {}, order);
    const auto isSame = [&](const auto& a, const auto& b) { return order(a) == order(b); };
    addresses.erase(std::unique(addresses.begin(), addresses.end(), isSame), addresses.end());
}

std::vector<TAddressPlace> ReadAddressPlaces(TCollection& collection) {
    const auto answer = collection.GetCalls().ReadInterfaceAddresses();
    TAddresses addresses = answer ? *answer : ReadAddressesOfTree(collection.GetFiles());
    SortAndDeduplicate(addresses);
    std::vector<TAddressPlace> places;
    for (TInterfaceAddress& row : addresses) {
        if (auto text = FormatIpAddress(row.address)) {
            std::string name = row.interface ? *row.interface + " " + *text : *text;
            places.push_back(
                {std::move(row.interface), std::move(row.address), std::move(*text), std::move(name)});
        }
    }
    return places;
}

}  // namespace

const std::vector<TAddressPlace>& GetAddressPlaces(TCollection& collection) {
    return collection.ReadOnce(ReadAddressPlaces);
}

}  // namespace NVORHOST
