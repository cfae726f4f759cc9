// Ports of USB hubs: their keys, speeds and attached devices.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* port = "KELSG_USBPort";
constexpr const char* controllerPath = "pci0000:00/0000:00:14.0";

struct TTree {
    std::string text;

    // An entry of /sys/bus/usb/devices that leads to `path` below /sys/devices.
    TTree& Device(const std::string& path) {
        text += "/sys/bus/usb/devices/" + path.substr(path.rfind('/') + 1) + " -> ../../../devices/" + path +
                "\n/sys/devices/" + path + "/\n";
        return *this;
    }
    TTree& File(const std::string& path, const std::string& value) {
        text += "/sys/devices/" + path + " = " + value + "\n";
        return *this;
    }
    TTree& Folder(const std::string& path) {
        text += "/sys/devices/" + path + "/\n";
        return *this;
    }
    TTree& Link(const std::string& path, const std::string& target) {
        text += "/sys/devices/" + path + " -> " + target + "\n";
        return *this;
    }
};

// Bus `bus` of the controller: a root hub with two ports, and in its second one a hub with two ports, of
// which the second holds another hub with one port, where `attached` is plugged in as device.
TTree Chain(const std::string& bus) {
    const std::string root = std::string(controllerPath) + "/usb" + bus;
    const std::string hub = root + "/" + bus + "-2";
    const std::string inner = hub + "/" + bus + "-2.2";
    const std::string rootPorts = root + "/" + bus + "-0:1.0";
    const std::string hubPorts = hub + "/" + bus + "-2:1.0";
    const std::string innerPorts = inner + "/" + bus + "-2.2:1.0";
    const std::string leaf = inner + "/" + bus + "-2.2.1";
    return TTree()
        .Device(root)
        .File(root + "/version", " 2.00")
        .File(root + "/speed", "480")
        .Device(rootPorts)
        .Folder(rootPorts + "/usb" + bus + "-port1")
        .Link(rootPorts + "/usb" + bus + "-port2/device", "../../" + bus + "-2")
        .Device(hub)
        .File(hub + "/speed", "480")
        .File(hub + "/product", "Outer Hub")
        .Device(hubPorts)
        .Folder(hubPorts + "/" + bus + "-2-port1")
        .Link(hubPorts + "/" + bus + "-2-port2/device", "../../" + bus + "-2.2")
        .Device(inner)
        .File(inner + "/speed", "12")
        .File(inner + "/product", "Inner Hub")
        .Device(innerPorts)
        .Link(innerPorts + "/" + bus + "-2.2-port1/device", "../../" + bus + "-2.2.1")
        .Device(leaf)
        .File(leaf + "/speed", "1.5")
        .File(leaf + "/manufacturer", "Example Keys")
        .File(leaf + "/product", "Keyboard 3");
}

TEST(UsbPorts, ListTheEmptyPortsOfChainedHubs) {
    TCollected collected;
    Collect(Chain("1").text, collected);
    EXPECT_THAT(collected.GetAll(port, "ElementName"),
                ElementsAre("USB port 1 of usb1", "USB port 2 of usb1", "USB port 1 of 1-2.2",
                            "USB port 1 of 1-2", "USB port 2 of 1-2"));
    EXPECT_THAT(
        collected.GetAll(port, "Description"),
        ElementsAre("USB port, empty", "USB port with Outer Hub", "USB port with Example Keys Keyboard 3",
                    "USB port, empty", "USB port with Inner Hub"));
}

TEST(UsbPorts, HaveTheSpeedsOfTheirDeviceAndTheirHub) {
    TCollected collected;
    Collect(Chain("1").text, collected);
    EXPECT_THAT(collected.GetAll(port, "Speed"), ElementsAre("0", "480000000", "1500000", "0", "12000000"));
    EXPECT_THAT(collected.GetAll(port, "MaxSpeed"),
                ElementsAre("480000000", "480000000", "12000000", "480000000", "480000000"));
}

TEST(UsbPorts, HaveTheirPathFromTheControllerAsKey) {
    TCollected collected;
    Collect(Chain("1").text, collected);
    EXPECT_THAT(collected.GetAll(port, "DeviceID"),
                ElementsAre("0000:00:14.0/usb2/0:1.0/port1", "0000:00:14.0/usb2/0:1.0/port2",
                            "0000:00:14.0/usb2/2.2:1.0/port1", "0000:00:14.0/usb2/2:1.0/port1",
                            "0000:00:14.0/usb2/2:1.0/port2"));
}

// On a kernel without port folders, `maxchild` of a hub has the number of ports, and the names of devices
// have the numbers of their ports.
TEST(UsbPorts, FallBackToTheHubsNumberOfPorts) {
    const std::string root = std::string(controllerPath) + "/usb1";
    const std::string hub = root + "/1-2";
    TCollected collected;
    Collect(TTree()
                .Device(root)
                .File(root + "/version", " 2.00")
                .File(root + "/speed", "480")
                .File(root + "/maxchild", "2")
                .Device(root + "/1-0:1.0")
                .Device(hub)
                .File(hub + "/speed", "480")
                .File(hub + "/product", "Outer Hub")
                .File(hub + "/maxchild", "2")
                .Device(hub + "/1-2.2")
                .File(hub + "/1-2.2/speed", "1.5")
                .File(hub + "/1-2.2/product", "Keyboard 3")
                .File(hub + "/1-2.2/maxchild", "0")
                .text,
            collected);
    EXPECT_THAT(collected.GetAll(port, "DeviceID"),
                ElementsAre("0000:00:14.0/usb2/2:1.0/port1", "0000:00:14.0/usb2/2:1.0/port2",
                            "0000:00:14.0/usb2/0:1.0/port1", "0000:00:14.0/usb2/0:1.0/port2"));
    EXPECT_THAT(collected.GetAll(port, "Description"),
                ElementsAre("USB port, empty", "USB port with Keyboard 3", "USB port, empty",
                            "USB port with Outer Hub"));
    EXPECT_THAT(collected.GetAll(port, "Speed"), ElementsAre("0", "1500000", "0", "480000000"));
    EXPECT_THAT(collected.GetAll(port, "MaxSpeed"), Each("480000000"));
}

TEST(UsbPorts, DoNotDependOnTheNumbersOfTheBuses) {
    TCollected first;
    TCollected second;
    Collect(Chain("1").text, first);
    Collect(Chain("12").text, second);
    EXPECT_EQ(first.CountInstances(port), 5U);
    EXPECT_EQ(first.GetAll(port, "DeviceID"), second.GetAll(port, "DeviceID"));
}

TEST(UsbPorts, HaveDifferentKeysOnTheTwoBusesOfOneController) {
    const std::string root = std::string(controllerPath) + "/usb2";
    TTree tree = Chain("1")
                     .Device(root)
                     .File(root + "/version", " 3.20")
                     .File(root + "/speed", "20000")
                     .Device(root + "/2-0:1.0")
                     .Folder(root + "/2-0:1.0/usb2-port1");
    TCollected collected;
    Collect(tree.text, collected);
    EXPECT_EQ(collected.Get(port, "DeviceID", 5), "0000:00:14.0/usb3/0:1.0/port1");
    EXPECT_EQ(collected.Get(port, "MaxSpeed", 5), "20000000000");
    EXPECT_THAT(collected.GetReport("usb-port").notes, IsEmpty());
}

TEST(UsbPorts, LeaveOutASpeedThatTheKernelDoesNotKnow) {
    const std::string root = std::string(controllerPath) + "/usb1";
    TCollected collected;
    Collect(TTree()
                .Device(root)
                .File(root + "/speed", "unknown")
                .Device(root + "/1-0:1.0")
                .Link(root + "/1-0:1.0/usb1-port1/device", "../../1-1")
                .Device(root + "/1-1")
                .File(root + "/1-1/speed", "5e3")
                .text,
            collected);
    EXPECT_EQ(collected.Get(port, "MaxSpeed"), "absent");
    EXPECT_EQ(collected.Get(port, "Speed"), "absent");
    EXPECT_EQ(collected.Get(port, "Description"), "USB port with a USB device");
}

TEST(UsbPorts, AreAbsentWithoutAReadableBusFolder) {
    TCollected collected;
    Collect("/sys/bus/usb/devices !denied\n", collected);
    EXPECT_EQ(collected.CountInstances(port), 0U);
    EXPECT_THAT(collected.GetReport("controller").deniedSources, ElementsAre("/sys/bus/usb/devices"));
}

class TSmallDatabase final : public IDeviceNames {
  public:
    TDeviceName FindPci(const TPciNumbers&) const override { return {}; }
    TDeviceName FindUsb(std::uint16_t vendorId, std::uint16_t productId) const override {
        TDeviceName name;
        if (vendorId == 0x1D6B) {
            name.vendor = "Example Foundation";
        }
        if (vendorId == 0x1D6B && productId == 0x0104) {
            name.device = "Composite Gadget";
        }
        return name;
    }
};

// Returns the description of a port whose device has the given files.
std::string DescribeAttached(const std::vector<std::pair<std::string, std::string>>& attachedFiles,
                             const IDeviceNames* names) {
    const std::string root = std::string(controllerPath) + "/usb1";
    TTree tree = TTree()
                     .Device(root)
                     .Device(root + "/1-0:1.0")
                     .Link(root + "/1-0:1.0/usb1-port1/device", "../../1-1")
                     .Device(root + "/1-1");
    for (const auto& [name, value] : attachedFiles) {
        tree.File(root + "/1-1/" + name, value);
    }
    const TMachine machine = ParseMachineTree(tree.text);
    TCollected collected;
    collected.reports = CollectAll({machine.files, machine.calls, collected.target, std::nullopt, names});
    return collected.Get(port, "Description");
}

TEST(UsbPorts, NameADeviceByItsOwnStrings) {
    const TSmallDatabase names;
    EXPECT_EQ(
        DescribeAttached(
            {{"manufacturer", "Maker"}, {"product", "Thing"}, {"idVendor", "1d6b"}, {"idProduct", "0104"}},
            &names),
        "USB port with Maker Thing");
    EXPECT_EQ(DescribeAttached({{"product", "Thing"}, {"idVendor", "1d6b"}, {"idProduct", "0104"}}, &names),
              "USB port with Example Foundation Thing");
}

TEST(UsbPorts, FallBackToTheDatabaseForTheNameOfADevice) {
    const TSmallDatabase names;
    EXPECT_EQ(DescribeAttached({{"idVendor", "1d6b"}, {"idProduct", "0104"}}, &names),
              "USB port with Example Foundation Composite Gadget");
    EXPECT_EQ(DescribeAttached({{"idVendor", "1d6b"}, {"idProduct", "0999"}}, &names),
              "USB port with Example Foundation");
    EXPECT_EQ(DescribeAttached({{"idVendor", "ffee"}, {"idProduct", "0104"}}, &names),
              "USB port with a USB device");
    EXPECT_EQ(DescribeAttached({{"idVendor", "1d6b"}, {"idProduct", "0104"}}, nullptr),
              "USB port with a USB device");
}

TEST(UsbPorts, NameTheMakerOnceWhenTheProductBeginsWithIt) {
    EXPECT_EQ(DescribeAttached({{"manufacturer", "Maker"}, {"product", "Maker Thing"}}, nullptr),
              "USB port with Maker Thing");
}

}  // namespace
}  // namespace NVORHOST
