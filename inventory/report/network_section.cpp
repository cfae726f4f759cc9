#include "inventory/report/network_section.h"

#include "inventory/report/report_tables.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace NINVENTORY {
namespace {

constexpr std::string_view portTypes[] = {"EthernetPort", "WiFiPort", "IBPort", "NetworkPort"};

bool IsPort(const TResource& resource) {
    return std::ranges::find(portTypes, resource.type) != std::end(portTypes);
}

void WriteAddresses(THtmlWriter& html, const TResources& endpoints) {
    for (const TResource* const endpoint : endpoints) {
        for (const std::string_view property : {"IPv4Address", "IPv6Address"}) {
            if (const std::string address = Show(*endpoint, property); !address.empty()) {
                html.Text(", ");
                html.Value(address);
            }
        }
    }
}

void WritePort(THtmlWriter& html, const TReportInventory& inventory, const TResource& port) {
    const auto item = html.Element("li");
    {
        const auto name = html.Element("b");
        html.Value(GetShownName(port));
    }
    html.Text(" ");
    WriteKnown(html, Show(port, "Description"));
    const std::string speed = Show(port, "Speed");
    html.Text(speed.empty() ? ", speed unknown" : port.GetText("Speed") == "0" ? ", no link" : ", " + speed);
    if (const std::string address = Show(port, "PermanentAddress"); !address.empty()) {
        html.Text(", ");
        const auto code = html.Element("code");
        html.Value(address);
    }
    WriteAddresses(html, inventory.GetDependents(port, "DeviceSAPImplementation"));
}

}  // namespace

bool HasNetwork(const TReportInventory& inventory) {
    return std::ranges::any_of(inventory.GetResources(), IsPort);
}

void WriteNetwork(THtmlWriter& html, const TReportInventory& inventory) {
    const auto list = html.Element("ul", {{"class", "ports"}});
    for (const TResource& resource : inventory.GetResources()) {
        if (IsPort(resource)) {
            WritePort(html, inventory, resource);
        }
    }
}

}  // namespace NINVENTORY
