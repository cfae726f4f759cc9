// Checks on PCI Express links. A link has two ends: a function, and the port of the bridge above it, whose
// secondary bus is the function's bus. Both have the attributes of the same link. The port's maximum includes
// the width of the slot.
#include "lint/resources/resource_checks.h"
#include "text/lines.h"
#include "text/numbers.h"

#include <algorithm>
#include <map>
#include <string>

namespace NLINT {
namespace {

using NINVENTORY::TResource;

using TPorts = std::map<std::string, const TResource*, std::less<>>;  // by address or by "domain:bus"

struct TLinkEnds {
    const TResource* function;
    const TResource* port;
};

TPorts FindPortsByAddress(const TResourceIndex& resources) {
    TPorts ports;
    for (const TResource* const port : resources.GetAll("PCIPort")) {
        ports.emplace(port->GetText("DeviceID"), port);
    }
    return ports;
}

// "0000" and "05" of "0000:05:00.0".
std::pair<std::string_view, std::string_view> SplitBus(std::string_view address) {
    const auto [domain, rest] = NVORHOST::SplitAt(address, ':');
    return {domain, NVORHOST::SplitAt(rest, ':').first};
}

std::string MakeBusKey(std::string_view domain, std::uint64_t bus) {
    return std::string(domain) + ":" + std::to_string(bus);
}

// The ports of bridges by the bus below them.
TPorts FindPortsByBus(const TResourceIndex& resources, const TPorts& byAddress) {
    TPorts ports;
    for (const TResource* const bridge : resources.GetAll("PCIBridge")) {
        const auto bus = FindNumber(*bridge, "SecondaryBusNumber");
        const auto port = byAddress.find(bridge->GetText("DeviceID"));
        if (bus && *bus != 0 && port != byAddress.end()) {
            ports.emplace(MakeBusKey(SplitBus(port->first).first, *bus), port->second);
        }
    }
    return ports;
}

// Only function 0 of a device, because the others show the same link.
std::vector<TLinkEnds> FindLinks(const TResourceIndex& resources) {
    const TPorts byAddress = FindPortsByAddress(resources);
    const TPorts byBus = FindPortsByBus(resources, byAddress);
    std::vector<TLinkEnds> links;
    for (const auto& [address, function] : byAddress) {
        const auto [domain, bus] = SplitBus(address);
        const auto number = NVORHOST::ParseHexNumber<std::uint16_t>(bus);
        const auto port = number ? byBus.find(MakeBusKey(domain, *number)) : byBus.end();
        if (port != byBus.end() && address.ends_with(".0")) {
            links.push_back({function, port->second});
        }
    }
    return links;
}

constexpr std::string_view rateProperty = "Speed";
constexpr std::string_view maxRateProperty = "MaxSpeed";
constexpr std::string_view lanesProperty = "LinkWidth";
constexpr std::string_view maxLanesProperty = "MaxLinkWidth";

std::optional<std::uint64_t> FindLanes(const TResource& port) {
    return FindNumber(port, lanesProperty);
}

std::optional<std::uint64_t> FindMaxLanes(const TResource& port) {
    return FindNumber(port, maxLanesProperty);
}

// The properties have the bits per second of all lanes together.
std::optional<std::uint64_t> FindLaneRate(const TResource& port, std::string_view rate,
                                          std::string_view lanes) {
    const auto bits = FindNumber(port, rate);
    const auto count = FindNumber(port, lanes);
    return bits && count && *count != 0 ? std::optional(*bits / *count) : std::nullopt;
}

std::optional<std::uint64_t> FindRate(const TResource& port) {
    return FindLaneRate(port, rateProperty, lanesProperty);
}

std::optional<std::uint64_t> FindMaxRate(const TResource& port) {
    return FindLaneRate(port, maxRateProperty, maxLanesProperty);
}

std::string DescribeLanes(std::uint64_t lanes) {
    return "x" + std::to_string(lanes);
}

std::string DescribeRate(std::uint64_t bitsPerSecond) {
    constexpr std::uint64_t bitsPerMegabit = 1'000'000;
    return std::to_string(bitsPerSecond / bitsPerMegabit) + " Mbit/s for each lane";
}

// A quantity of a link.
struct TQuantity {
    std::optional<std::uint64_t> (*find)(const TResource& port);
    std::optional<std::uint64_t> (*findMaximum)(const TResource& port);
    std::string (*describe)(std::uint64_t number);
    std::string_view property, maximumProperty;
};

constexpr TQuantity width{FindLanes, FindMaxLanes, DescribeLanes, lanesProperty, maxLanesProperty};
constexpr TQuantity speed{FindRate, FindMaxRate, DescribeRate, rateProperty, maxRateProperty};

// Reports links whose quantity is below the smaller of the two maximums.
void ReportBelowMaximum(const TResourceIndex& resources, const TReport& report, const TQuantity& quantity) {
    for (const auto& [function, port] : FindLinks(resources)) {
        const auto current = quantity.find(*function);
        const auto ofFunction = quantity.findMaximum(*function);
        const auto ofPort = quantity.findMaximum(*port);
        if (!current || !ofFunction || !ofPort || *current >= std::min(*ofFunction, *ofPort)) {
            continue;
        }
        const TResource& weaker = *ofPort < *ofFunction ? *port : *function;
        report.Add("PCI function " + std::string(function->GetText("DeviceID")) + ", " +
                       std::string(function->GetText("Name")),
                   {quantity.describe(*current), NameSource(*function, quantity.property)},
                   {quantity.describe(std::min(*ofFunction, *ofPort)),
                    NameSource(weaker, quantity.maximumProperty)});
    }
}

}  // namespace

void CheckLinkWidths(const TResourceIndex& resources, const TReport& report) {
    ReportBelowMaximum(resources, report, width);
}

void CheckLinkSpeeds(const TResourceIndex& resources, const TReport& report) {
    ReportBelowMaximum(resources, report, speed);
}

}  // namespace NLINT
