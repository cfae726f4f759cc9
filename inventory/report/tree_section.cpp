#include "inventory/report/tree_section.h"

#include "inventory/compare/part.h"
#include "inventory/report/device_tree.h"
#include "inventory/report/report_tables.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace NINVENTORY {
namespace {

// The PCI ports of the functions, which have their drivers, by address.
using TPorts = std::map<std::string_view, const TResource*>;

TPorts FindPorts(const TReportInventory& inventory) {
    TPorts ports;
    for (const TResource* const port : inventory.GetAll("PCIPort")) {
        ports.emplace(port->GetText("DeviceID"), port);
    }
    return ports;
}

void WritePciDevice(THtmlWriter& html, const TResource& function, const TPorts& ports) {
    html.Leaf("code", Show(function, "DeviceID"));
    html.Text(" ");
    if (function.type == "PCIBridge") {
        const auto bridge = html.Element("span", {{"class", "quiet"}});
        html.Value(GetShownName(function));
    } else {
        html.Value(GetShownName(function));
    }
    const auto port = ports.find(function.GetText("DeviceID"));
    const std::string driver = port == ports.end() ? std::string() : GetFact(*port->second, "Driver");
    if (!driver.empty()) {
        html.Text(", driver ");
        html.Value(driver);
    }
}

void WriteUsbDevice(THtmlWriter& html, const TResource& device) {
    if (device.type == "USBController") {
        html.Leaf("code", Show(device, "DeviceID"));
        html.Text(" ");
        return html.Value(GetShownName(device));
    }
    html.Value(GetShownName(device));
    html.Text(": ");
    WriteKnown(html, Show(device, "Description"));
    if (const std::string speed = Show(device, "Speed"); !speed.empty() && device.GetText("Speed") != "0") {
        html.Text(", " + speed);
    }
}

using TWriteDevice = std::function<void(THtmlWriter& html, const TResource& device)>;

void WriteNodes(THtmlWriter& html, const std::vector<TDeviceNode>& nodes, const TWriteDevice& write) {
    for (const TDeviceNode& node : nodes) {
        const auto item = html.Element("li");
        if (node.device != nullptr) {
            write(html, *node.device);
        } else {
            const auto text = html.Element("span", {{"class", "quiet"}});
            html.Value(node.text);
        }
        if (!node.children.empty()) {
            const auto list = html.Element("ul");
            WriteNodes(html, node.children, write);
        }
    }
}

void WriteTree(THtmlWriter& html, const std::vector<TDeviceNode>& nodes, const TWriteDevice& write) {
    const auto list = html.Element("ul", {{"class", "tree"}});
    WriteNodes(html, nodes, write);
}

}  // namespace

bool HasPci(const TReportInventory& inventory) {
    return inventory.FindFirst("PCIDevice") != nullptr || inventory.FindFirst("PCIBridge") != nullptr;
}

void WritePciTree(THtmlWriter& html, const TReportInventory& inventory) {
    const TPorts ports = FindPorts(inventory);
    WriteTree(html, MakePciTree(inventory), [&](THtmlWriter& writer, const TResource& function) {
        WritePciDevice(writer, function, ports);
    });
}

bool HasUsb(const TReportInventory& inventory) {
    return inventory.FindFirst("USBPort") != nullptr || inventory.FindFirst("USBController") != nullptr;
}

void WriteUsbTree(THtmlWriter& html, const TReportInventory& inventory) {
    WriteTree(html, MakeUsbTree(inventory), &WriteUsbDevice);
}

}  // namespace NINVENTORY
