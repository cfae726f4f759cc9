#include "inventory/report/device_tree.h"

#include "text/numbers.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace NINVENTORY {
namespace {

constexpr std::string_view pciTypes[] = {"PCIDevice", "PCIBridge", "DisplayController", "IDEController",
                                         "USBController"};

bool IsPciType(std::string_view type) {
    return std::ranges::find(pciTypes, type) != std::end(pciTypes);
}

// "0000:02", domain and bus of the address "0000:02:00.0".
using TBus = std::pair<std::uint32_t, std::uint32_t>;

std::optional<TBus> FindBus(std::string_view address) {
    const std::size_t first = address.find(':');
    const std::size_t second = first == std::string_view::npos ? first : address.find(':', first + 1);
    if (second == std::string_view::npos) {
        return std::nullopt;
    }
    const auto domain = NVORHOST::ParseNumber<std::uint32_t>(address.substr(0, first), 16);
    const auto bus = NVORHOST::ParseNumber<std::uint32_t>(address.substr(first + 1, second - first - 1), 16);
    return domain && bus ? std::optional(TBus(*domain, *bus)) : std::nullopt;
}

// A bridge leads to a bus with a higher number than its own, so that there are no cycles.
std::optional<TBus> FindSecondaryBus(const TResource& function) {
    const auto own = FindBus(function.GetText("DeviceID"));
    const auto bus = NVORHOST::ParseNumber<std::uint8_t>(function.GetText("SecondaryBusNumber"));
    return own && bus && *bus > own->second ? std::optional(TBus(own->first, *bus)) : std::nullopt;
}

using TBuses = std::map<TBus, TResources>;

TDeviceNode MakePciNode(const TResource& function, TBuses& buses) {
    TDeviceNode node{.device = &function, .text = {}, .children = {}};
    const auto bus = FindSecondaryBus(function);
    const auto found = bus ? buses.find(*bus) : buses.end();
    if (found != buses.end()) {
        // Two bridges that claim one bus do not show its functions twice.
        const TResources functions = std::move(buses.extract(found).mapped());
        for (const TResource* const child : functions) {
            node.children.push_back(MakePciNode(*child, buses));
        }
    }
    return node;
}

struct TUsbPort {
    const TResource* port;
    std::string
        parent;  // place of the port that the hub is connected to; that of the controller for a root hub
    std::string place;
    std::string number;
};

// Splits "CONTROLLER/usb2/2.3.1:1.0/port4": port 4 of the hub at 2.3.1, whose place is
// "CONTROLLER/usb2/2.3.1.4". Returns nullopt for identities of other forms.
std::optional<TUsbPort> ParseUsbPort(const TResource& port) {
    const std::string_view id = port.GetText("DeviceID");
    const std::size_t name = id.rfind("/port");
    const std::size_t hub =
        name == std::string_view::npos || name == 0 ? std::string_view::npos : id.rfind('/', name - 1);
    const std::size_t bus =
        hub == std::string_view::npos || hub == 0 ? std::string_view::npos : id.rfind('/', hub - 1);
    if (bus == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string number(id.substr(name + 5));
    const std::string path(id.substr(hub + 1, id.substr(hub + 1, name - hub - 1).find(':')));
    const std::string prefix(id.substr(0, hub + 1));
    return path == "0" ? TUsbPort{&port, std::string(id.substr(0, bus)), prefix + number, number}
                       : TUsbPort{&port, prefix + path, prefix + path + "." + number, number};
}

bool IsEmptyPort(const TDeviceNode& node) {
    return node.device != nullptr && node.children.empty() && node.device->GetText("Speed") == "0";
}

std::vector<TDeviceNode> JoinEmptyPorts(std::vector<TDeviceNode> nodes) {
    std::vector<TDeviceNode> joined;
    for (std::size_t i = 0; i < nodes.size();) {
        const auto begin = nodes.begin() + static_cast<std::ptrdiff_t>(i);
        const auto run = std::find_if_not(begin, nodes.end(), IsEmptyPort) - begin;
        if (run > 1) {
            joined.push_back(
                {.device = nullptr, .text = std::to_string(run) + " empty ports", .children = {}});
            i += static_cast<std::size_t>(run);
        } else {
            joined.push_back(std::move(nodes[i++]));
        }
    }
    return joined;
}

using TPorts = std::map<std::string, std::vector<TUsbPort>>;

// USB allows seven tiers. Ports below more hubs than that begin a tree of their own, so that no identity
// makes the recursion deep.
std::vector<TDeviceNode> MakePortNodes(const std::string& place, TPorts& ports, int tier = 1) {
    constexpr int maxTier = 16;
    std::vector<TDeviceNode> nodes;
    const auto found = ports.find(place);
    if (found == ports.end() || tier > maxTier) {
        return nodes;
    }
    const std::vector<TUsbPort> children = std::move(ports.extract(found).mapped());
    for (const TUsbPort& port : children) {
        nodes.push_back(
            {.device = port.port, .text = {}, .children = MakePortNodes(port.place, ports, tier + 1)});
    }
    return JoinEmptyPorts(std::move(nodes));
}

TPorts ListPorts(const TReportInventory& inventory, std::vector<TDeviceNode>& others) {
    TPorts ports;
    for (const TResource* const port : inventory.GetAll("USBPort")) {
        if (auto parsed = ParseUsbPort(*port)) {
            ports[parsed->parent].push_back(std::move(*parsed));
        } else {
            others.push_back({.device = port, .text = {}, .children = {}});
        }
    }
    return ports;
}

}  // namespace

std::vector<TDeviceNode> MakePciTree(const TReportInventory& inventory) {
    std::vector<TDeviceNode> top;
    TBuses buses;
    std::set<TBus> led;  // buses that a bridge leads to
    for (const TResource& function : inventory.GetResources()) {
        if (!IsPciType(function.type)) {
            continue;
        }
        if (const auto bus = FindBus(function.GetText("DeviceID"))) {
            buses[*bus].push_back(&function);
        } else {
            top.push_back({.device = &function, .text = {}, .children = {}});
        }
        if (const auto bus = FindSecondaryBus(function)) {
            led.insert(*bus);
        }
    }
    for (auto& [bus, functions] : buses) {
        std::ranges::sort(functions, {}, [](const TResource* each) { return each->GetText("DeviceID"); });
    }
    std::vector<TBus> roots;
    for (const auto& [bus, functions] : buses) {
        if (!led.contains(bus)) {
            roots.push_back(bus);
        }
    }
    for (const TBus& root : roots) {
        const TResources functions = std::move(buses.extract(root).mapped());
        for (const TResource* const function : functions) {
            top.push_back(MakePciNode(*function, buses));
        }
    }
    return top;
}

std::vector<TDeviceNode> MakeUsbTree(const TReportInventory& inventory) {
    std::vector<TDeviceNode> others;
    TPorts ports = ListPorts(inventory, others);
    std::vector<TDeviceNode> top;
    for (const TResource* const controller : inventory.GetAll("USBController")) {
        top.push_back({.device = controller,
                       .text = {},
                       .children = MakePortNodes(std::string(controller->GetText("DeviceID")), ports)});
    }
    while (!ports.empty()) {
        std::string place = ports.begin()->first;
        auto children = MakePortNodes(place, ports);
        top.push_back({.device = nullptr, .text = std::move(place), .children = std::move(children)});
    }
    std::ranges::move(others, std::back_inserter(top));
    return top;
}

}  // namespace NINVENTORY
