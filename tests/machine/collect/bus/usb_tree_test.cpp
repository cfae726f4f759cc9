#include "machine/collect/bus/usb_tree.h"

#include "tests/machine/system/machine_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string controller = "/sys/devices/pci0000:00/0000:00:14.0";

// An entry of /sys/bus/usb/devices that leads to `path` below the controller.
std::string Device(const std::string& path) {
    return "/sys/bus/usb/devices/" + path.substr(path.rfind('/') + 1) +
           " -> ../../../devices/pci0000:00/0000:00:14.0/" + path + "\n" + controller + "/" + path + "/\n";
}

// One line for each root hub or port.
std::vector<std::string> RootHubs(const std::string& tree) {
    std::vector<std::string> lines;
    for (const TUsbRootHub& hub : ReadUsbRootHubs(ParseMachineTree(tree).files)) {
        lines.push_back(hub.name + " " + hub.controllerPath);
    }
    return lines;
}

std::vector<std::string> Ports(const std::string& tree) {
    std::vector<std::string> lines;
    for (const TUsbPort& port : ReadUsbPorts(ParseMachineTree(tree).files)) {
        lines.push_back(port.hub + " " + port.number + " " + port.position + " " + port.attached);
    }
    return lines;
}

TEST(ReadUsbRootHubs, ReturnsTheRootHubsInTheOrderOfTheirNames) {
    EXPECT_THAT(RootHubs(Device("usb10") + Device("usb2") + Device("usb2/2-1") + Device("usb2/2-0:1.0")),
                ElementsAre("usb10 " + controller, "usb2 " + controller));
}

TEST(ReadUsbRootHubs, LeavesOutEntriesThatAreNotLinks) {
    EXPECT_THAT(RootHubs("/sys/bus/usb/devices/usb1/speed = 480\n"), IsEmpty());
    EXPECT_THAT(RootHubs("/sys/bus/usb/devices !denied\n"), IsEmpty());
}

TEST(ReadUsbPorts, ReadsTheFoldersOfPortsOfRootAndOtherHubs) {
    EXPECT_THAT(Ports(Device("usb1") + Device("usb1/1-0:1.0") + controller + "/usb1/1-0:1.0/usb1-port1/\n" +
                      controller + "/usb1/1-0:1.0/usb1-port2/\n" + Device("usb1/1-2") +
                      Device("usb1/1-2/1-2:1.0") + controller + "/usb1/1-2/1-2:1.0/1-2-port1/\n"),
                ElementsAre("usb1 1 0000:00:14.0/0:1.0/port1 /sys/bus/usb/devices/1-0:1.0/usb1-port1/device",
                            "usb1 2 0000:00:14.0/0:1.0/port2 /sys/bus/usb/devices/1-0:1.0/usb1-port2/device",
                            "1-2 1 0000:00:14.0/2:1.0/port1 /sys/bus/usb/devices/1-2:1.0/1-2-port1/device"));
}

TEST(ReadUsbPorts, CountsThePortsOfHubsWithoutFoldersOfPorts) {
    EXPECT_THAT(
        Ports(Device("usb1") + controller + "/usb1/maxchild = 2\n" + Device("usb1/1-2") + controller +
              "/usb1/1-2/maxchild = 1\n" + Device("usb1/1-1") + controller + "/usb1/1-1/maxchild = 0\n"),
        ElementsAre("1-2 1 0000:00:14.0/2:1.0/port1 /sys/bus/usb/devices/1-2.1",
                    "usb1 1 0000:00:14.0/0:1.0/port1 /sys/bus/usb/devices/1-1",
                    "usb1 2 0000:00:14.0/0:1.0/port2 /sys/bus/usb/devices/1-2"));
}

TEST(ReadUsbPorts, IgnoresAMalformedNumberOfPorts) {
    for (const std::string count : {"", "-1", "256", "two"}) {
        EXPECT_THAT(Ports(Device("usb1") + controller + "/usb1/maxchild = " + count + "\n"), IsEmpty())
            << count;
    }
}

TEST(ReadUsbPorts, FallsBackToTheNameOfTheInterfaceForThePosition) {
    EXPECT_THAT(Ports("/sys/bus/usb/devices/1-0:1.0/usb1-port1/\n"),
                ElementsAre("usb1 1 1-0:1.0/port1 /sys/bus/usb/devices/1-0:1.0/usb1-port1/device"));
}

TEST(ReadUsbPorts, ReturnsNothingForInterfacesOfDevicesThatAreNotHubs) {
    EXPECT_THAT(Ports(Device("usb1/1-1") + Device("usb1/1-1/1-1:1.0")), IsEmpty());
    EXPECT_THAT(Ports(""), IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
