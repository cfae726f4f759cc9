#include "inventory/report/tree_section.h"

#include "inventory/report/device_tree.h"
#include "inventory/report/report_tables.h"

namespace NINVENTORY {
namespace {

void WritePciDevice(THtmlWriter& html, const TResource& function) {
    html.Leaf("code", Show(function, "DeviceID"));
    html.Text(" ");
    if (function.type == "PCIBridge") {
        const auto bridge = html.Element("span", {{"class", "quiet"}});
        html.Value(GetShownName(function));
    } else {
        html.Value(GetShownName(function));
    }
    if (const std::string driver = Show(function, "Driver"); !driver.empty()) {
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

using TWriteDevice = void (*)(THtmlWriter& html, const TResource& device);

void WriteNodes(THtmlWriter& html, const std::vector<TDeviceNode>& nodes, TWriteDevice write) {
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

void WriteTree(THtmlWriter& html, const std::vector<TDeviceNode>& nodes, TWriteDevice write) {
    const auto list = html.Element("ul", {{"class", "tree"}});
    WriteNodes(html, nodes, write);
}

}  // namespace

bool HasPci(const TReportInventory& inventory) {
    return inventory.FindFirst("PCIDevice") != nullptr || inventory.FindFirst("PCIBridge") != nullptr;
}

void WritePciTree(THtmlWriter& html, const TReportInventory& inventory) {
    WriteTree(html, MakePciTree(inventory), &WritePciDevice);
}

bool HasUsb(const TReportInventory& inventory) {
    return inventory.FindFirst("USBPort") != nullptr || inventory.FindFirst("USBController") != nullptr;
}

void WriteUsbTree(THtmlWriter& html, const TReportInventory& inventory) {
    WriteTree(html, MakeUsbTree(inventory), &WriteUsbDevice);
}

}  // namespace NINVENTORY
