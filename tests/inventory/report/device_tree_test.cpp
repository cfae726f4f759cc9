#include "inventory/report/device_tree.h"

#include "made_inventory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace NINVENTORY {
namespace {

// Writes a tree as "a(b c(d))".
std::string Outline(const std::vector<TDeviceNode>& nodes) {
    std::string outline;
    for (const TDeviceNode& node : nodes) {
        outline += (outline.empty() ? "" : " ") +
                   (node.device == nullptr ? "[" + node.text + "]" : GetShownName(*node.device));
        outline += node.children.empty() ? "" : "(" + Outline(node.children) + ")";
    }
    return outline;
}

TEST(PciTree, PutsFunctionsBelowTheBridgeToTheirBus) {
    TMadeInventory made;
    made.Add("PCIDevice", {{"Name", "disk"}, {"DeviceID", "0000:02:00.0"}})
        .Add("PCIDevice", {{"Name", "host"}, {"DeviceID", "0000:00:00.0"}})
        .Add("PCIBridge", {{"Name", "port"}, {"DeviceID", "0000:00:01.0"}, {"SecondaryBusNumber", "1"}})
        .Add("PCIBridge", {{"Name", "switch"}, {"DeviceID", "0000:01:00.0"}, {"SecondaryBusNumber", "2"}})
        .Add("DisplayController", {{"Name", "display"}, {"DeviceID", "0000:01:01.0"}});
    EXPECT_EQ(Outline(MakePciTree(made.Get())), "host port(switch(disk) display)");
}

TEST(PciTree, KeepsEveryFunctionWithMisleadingBusNumbers) {
    TMadeInventory made;
    made.Add("PCIBridge", {{"Name", "a"}, {"DeviceID", "0000:01:00.0"}, {"SecondaryBusNumber", "1"}})
        .Add("PCIBridge", {{"Name", "b"}, {"DeviceID", "0000:02:00.0"}, {"SecondaryBusNumber", "1"}})
        .Add("PCIBridge", {{"Name", "c"}, {"DeviceID", "0000:01:01.0"}, {"SecondaryBusNumber", "2"}})
        .Add("PCIBridge", {{"Name", "d"}, {"DeviceID", "0000:01:02.0"}, {"SecondaryBusNumber", "2"}})
        .Add("PCIDevice", {{"Name", "e"}, {"DeviceID", "elsewhere"}});
    EXPECT_EQ(Outline(MakePciTree(made.Get())), "e a c(b) d");
}

TEST(UsbTree, PutsPortsBelowThePortOfTheirHub) {
    TMadeInventory made;
    made.Add("USBController", {{"Name", "controller"}, {"DeviceID", "0000:00:14.0"}})
        .Add("USBPort",
             {{"Name", "p2.3"}, {"DeviceID", "0000:00:14.0/usb2/2:1.0/port3"}, {"Speed", "12000000"}})
        .Add("USBPort", {{"Name", "p1"}, {"DeviceID", "0000:00:14.0/usb2/0:1.0/port1"}, {"Speed", "0"}})
        .Add("USBPort",
             {{"Name", "p2"}, {"DeviceID", "0000:00:14.0/usb2/0:1.0/port2"}, {"Speed", "480000000"}})
        .Add("USBPort",
             {{"Name", "p2.3.1"}, {"DeviceID", "0000:00:14.0/usb2/2.3:1.0/port1"}, {"Speed", "1"}});
    EXPECT_EQ(Outline(MakeUsbTree(made.Get())), "controller(p1 p2(p2.3(p2.3.1)))");
}

TEST(UsbTree, CountsNeighbouringEmptyPorts) {
    TMadeInventory made;
    made.Add("USBController", {{"Name", "controller"}, {"DeviceID", "c"}});
    for (const char* port : {"1", "2", "3", "4"}) {
        made.Add("USBPort", {{"Name", port},
                             {"DeviceID", std::string("c/usb2/0:1.0/port") + port},
                             {"Speed", port == std::string("3") ? "1" : "0"}});
    }
    EXPECT_EQ(Outline(MakeUsbTree(made.Get())), "controller([2 empty ports] 3 4)");
}

TEST(UsbTree, KeepsPortsWithoutAController) {
    TMadeInventory made;
    made.Add("USBPort", {{"Name", "a"}, {"DeviceID", "c/usb2/0:1.0/port1"}, {"Speed", "1"}})
        .Add("USBPort", {{"Name", "b"}, {"DeviceID", "no path"}});
    EXPECT_EQ(Outline(MakeUsbTree(made.Get())), "[c](a) b");
}

TEST(UsbTree, EndsWithAnEndlessChainOfHubs) {
    TMadeInventory made;
    made.Add("USBController", {{"Name", "controller"}, {"DeviceID", "c"}});
    std::string path = "0";
    for (int tier = 0; tier < 3000; ++tier) {
        made.Add("USBPort", {{"DeviceID", "c/usb2/" + path + ":1.0/port1"}, {"Speed", "1"}});
        path = path == "0" ? "1" : path + ".1";
    }
    EXPECT_GT(MakeUsbTree(made.Get()).size(), 100U);
}

}  // namespace
}  // namespace NINVENTORY
