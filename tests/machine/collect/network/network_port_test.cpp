// CIM_EthernetPort, CIM_WiFiPort, CIM_IBPort and CIM_NetworkPort: one instance for each network port.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr char ethernetPort[] = "CIM_EthernetPort";
constexpr char wifiPort[] = "CIM_WiFiPort";
constexpr char infiniBandPort[] = "CIM_IBPort";
constexpr char otherPort[] = "CIM_NetworkPort";

// A port of a PCI function.
std::string MakePort(const std::string& name, const std::string& device, const std::string& attributes) {
    const std::string folder = "/sys/devices/" + device + "/net/" + name;
    std::string tree = "/sys/class/net/" + name + " -> ../.." + folder.substr(4) + "\n" + folder +
                       "/device -> ../..\n" + folder + "/type = 1\n";
    for (std::size_t start = 0; start < attributes.size();) {
        const auto end = attributes.find('\n', start);
        tree += folder + "/" + attributes.substr(start, end - start) + "\n";
        start = end + 1;
    }
    return tree;
}

std::string MakeVirtualPort(const std::string& name, const std::string& attributes) {
    std::string tree = "/sys/class/net/" + name + " -> ../../devices/virtual/net/" + name + "\n";
    for (std::size_t start = 0; start < attributes.size();) {
        const auto end = attributes.find('\n', start);
        tree += "/sys/devices/virtual/net/" + name + "/" + attributes.substr(start, end - start) + "\n";
        start = end + 1;
    }
    return tree;
}

constexpr char card[] = "pci0000:00/0000:00:1c.0/0000:02:00.0";

TEST(NetworkPort, ReadsEveryPropertyOfAnEthernetPort) {
    TCollected collected;
    Collect(MakePort("eno1", card,
                     "address = 52:54:00:b2:00:01\naddr_assign_type = 0\noperstate = up\nflags = 0x1003\n"
                     "speed = 1000\nduplex = full\nmtu = 9000\nmaster -> ../../../../../virtual/net/br0\n"
                     "brport/path_cost = 4\n") +
                "/sys/devices/pci0000:00/0000:00:1c.0/0000:02:00.0/driver -> ../../../../bus/pci/drivers/"
                "e1000e\n",
            collected);
    ASSERT_EQ(collected.CountInstances(ethernetPort), 1U);
    EXPECT_EQ(collected.Get(ethernetPort, "ElementName"), "eno1");
    EXPECT_EQ(collected.Get(ethernetPort, "Description"), "Ethernet port");
    EXPECT_EQ(collected.Get(ethernetPort, "DeviceID"), "525400B20001");
    EXPECT_EQ(collected.Get(ethernetPort, "Name"), "eno1");
    EXPECT_EQ(collected.Get(ethernetPort, "OperationalStatus"), "{2}");
    EXPECT_EQ(collected.Get(ethernetPort, "EnabledState"), "2");
    EXPECT_EQ(collected.Get(ethernetPort, "OtherIdentifyingInfo"), "{0000:02:00.0, e1000e, br0}");
    EXPECT_EQ(collected.Get(ethernetPort, "IdentifyingDescriptions"), "{PCI function, Driver, Bridge}");
    EXPECT_EQ(collected.Get(ethernetPort, "PermanentAddress"), "525400B20001");
    EXPECT_EQ(collected.Get(ethernetPort, "NetworkAddresses"), "{525400B20001}");
    EXPECT_EQ(collected.Get(ethernetPort, "LinkTechnology"), "2");
    EXPECT_EQ(collected.Get(ethernetPort, "Speed"), "1000000000");
    EXPECT_EQ(collected.Get(ethernetPort, "FullDuplex"), "true");
    EXPECT_EQ(collected.Get(ethernetPort, "ActiveMaximumTransmissionUnit"), "9000");
}

TEST(NetworkPort, TakesThePermanentAddressOfABondedPortFromTheBond) {
    TCollected collected;
    Collect(MakePort("eno1", card,
                     "address = 52:54:00:b2:00:99\naddr_assign_type = 3\n"
                     "bonding_slave/perm_hwaddr = 52:54:00:b2:00:01\n"
                     "master -> ../../../../../virtual/net/bond0\n"),
            collected);
    EXPECT_EQ(collected.Get(ethernetPort, "DeviceID"), "525400B20001");
    EXPECT_EQ(collected.Get(ethernetPort, "PermanentAddress"), "525400B20001");
    EXPECT_EQ(collected.Get(ethernetPort, "NetworkAddresses"), "{525400B20099}");
    EXPECT_EQ(collected.Get(ethernetPort, "IdentifyingDescriptions"), "{PCI function, Bond}");
    EXPECT_EQ(collected.Get(ethernetPort, "OtherIdentifyingInfo"), "{0000:02:00.0, bond0}");
}

TEST(NetworkPort, FallsBackToThePlaceForAnAddressThatIsNotPermanent) {
    TCollected collected;
    Collect(MakePort("eth0", card, "address = 52:54:00:b2:00:01\naddr_assign_type = 1\n") +
                MakePort("eth1", card, "address = 00:00:00:00:00:00\naddr_assign_type = 0\ndev_port = 1\n"),
            collected);
    EXPECT_THAT(collected.GetAll(ethernetPort, "DeviceID"),
                ElementsAre("0000:02:00.0", "0000:02:00.0/port-1"));
    EXPECT_THAT(collected.GetAll(ethernetPort, "PermanentAddress"), ElementsAre("absent", "absent"));
    EXPECT_THAT(collected.GetAll(ethernetPort, "NetworkAddresses"), ElementsAre("{525400B20001}", "absent"));
}

TEST(NetworkPort, LeavesOutTheSpeedOfAPortThatIsNotUp) {
    TCollected collected;
    Collect(MakePort("eth0", card, "operstate = down\nflags = 0x1003\nspeed = 1000\nduplex = full\n") +
                MakePort("eth1", card, "operstate = down\nflags = 0x1002\nspeed = 1000\nduplex = full\n") +
                MakePort("eth2", card, "operstate = testing\nflags = 0x1003\n"),
            collected);
    EXPECT_THAT(collected.GetAll(ethernetPort, "EnabledState"), ElementsAre("6", "3", "7"));
    EXPECT_THAT(collected.GetAll(ethernetPort, "OperationalStatus"), ElementsAre("{10}", "{10}", "{11}"));
    EXPECT_THAT(collected.GetAll(ethernetPort, "Speed"), ElementsAre("absent", "absent", "absent"));
    EXPECT_THAT(collected.GetAll(ethernetPort, "FullDuplex"), ElementsAre("absent", "absent", "absent"));
}

TEST(NetworkPort, LeavesOutAnUnknownSpeed) {
    TCollected collected;
    Collect(MakePort("eth0", card, "operstate = up\nspeed = -1\nduplex = unknown\n") +
                MakePort("eth1", card, "operstate = up\nspeed = 4294967295\nduplex = half\n"),
            collected);
    EXPECT_THAT(collected.GetAll(ethernetPort, "Speed"), ElementsAre("absent", "absent"));
    EXPECT_THAT(collected.GetAll(ethernetPort, "FullDuplex"), ElementsAre("absent", "false"));
}

TEST(NetworkPort, RecognisesWifiByDeviceTypeOrRadio) {
    TCollected collected;
    Collect(
        MakePort("wlan0", card, "uevent = DEVTYPE=wlan\n") + MakePort("wlan1", card, "phy80211/index = 0\n"),
        collected);
    EXPECT_THAT(collected.GetAll(wifiPort, "Name"), ElementsAre("wlan0", "wlan1"));
    EXPECT_THAT(collected.GetAll(wifiPort, "LinkTechnology"), ElementsAre("11", "11"));
    EXPECT_EQ(collected.CountInstances(ethernetPort), 0U);
}

TEST(NetworkPort, IdentifiesAnInfiniBandPortByItsGuid) {
    TCollected collected;
    const std::string entry = "/sys/class/net/ib0";
    Collect(entry + "/type = 32\n" + entry + "/device -> ../../../devices/" + card + "\n" + entry +
                "/addr_assign_type = 0\n" + entry +
                "/address = 80:00:02:08:fe:80:00:00:00:00:00:00:00:02:c9:03:00:0a:0b:0c\n" +
                "/sys/devices/pci0000:00/0000:00:1c.0/0000:02:00.0/dev_id = 0\n",
            collected);
    EXPECT_EQ(collected.Get(infiniBandPort, "DeviceID"), "0002C903000A0B0C");
    EXPECT_EQ(collected.Get(infiniBandPort, "PermanentAddress"), "0002C903000A0B0C");
    EXPECT_EQ(collected.Get(infiniBandPort, "NetworkAddresses"),
              "{80000208FE800000000000000002C903000A0B0C}");
    EXPECT_EQ(collected.Get(infiniBandPort, "LinkTechnology"), "3");
    EXPECT_EQ(collected.Get(infiniBandPort, "OtherIdentifyingInfo"), "{0000:02:00.0}");
}

TEST(NetworkPort, DescribesVirtualPortsByTheirKind) {
    TCollected collected;
    Collect(MakeVirtualPort("bond0",
                            "type = 1\nbonding/mode = 802.3ad 4\noperstate = up\nspeed = 2000\n"
                            "lower_eno1 -> ../eno1\nlower_eno2 -> ../eno2\n") +
                MakeVirtualPort("br0",
                                "type = 1\nbridge/stp_state = 0\noperstate = up\nspeed = 10000\n"
                                "address = 02:00:00:00:00:07\naddr_assign_type = 0\n") +
                MakeVirtualPort("tap0", "type = 1\ntun_flags = 0x5002\noperstate = up\nspeed = 10\n") +
                MakeVirtualPort("v12",
                                "type = 1\nuevent = DEVTYPE=vlan\noperstate = up\nspeed = 1000\n"
                                "lower_eno1 -> ../eno1\n") +
                MakeVirtualPort("veth7", "type = 1\noperstate = up\nspeed = 10000\nduplex = full\n") +
                MakeVirtualPort("vx5", "type = 1\nuevent = DEVTYPE=vxlan\n") +
                MakeVirtualPort("wg0", "type = 65534\n"),
            collected);
    EXPECT_THAT(collected.GetAll(otherPort, "Description"),
                ElementsAre("Bond", "Bridge", "Tunnel of a program", "VLAN", "Network port", "VXLAN tunnel",
                            "Network port"));
    EXPECT_THAT(collected.GetAll(otherPort, "DeviceID"),
                ElementsAre("bond0", "br0", "tap0", "v12", "veth7", "vx5", "wg0"));
    EXPECT_THAT(collected.GetAll(otherPort, "Speed"),
                ElementsAre("2000000000", "absent", "absent", "1000000000", "absent", "absent", "absent"));
    EXPECT_EQ(collected.Get(otherPort, "OtherIdentifyingInfo", 0), "{eno1, eno2}");
    EXPECT_EQ(collected.Get(otherPort, "IdentifyingDescriptions", 0), "{Lower port, Lower port}");
    EXPECT_EQ(collected.Get(otherPort, "OtherIdentifyingInfo", 3), "{eno1}");
    EXPECT_EQ(collected.Get(otherPort, "FullDuplex", 4), "absent");
    EXPECT_EQ(collected.Get(otherPort, "PermanentAddress", 1), "absent");
    EXPECT_EQ(collected.Get(otherPort, "LinkTechnology", 6), "absent");
}

TEST(NetworkPort, ListsAModemAsAnotherPortWithItsDevice) {
    TCollected collected;
    Collect(MakePort("wwan0", card, "uevent = DEVTYPE=wwan\n"), collected);
    EXPECT_EQ(collected.Get(otherPort, "Description"), "Mobile broadband port");
    EXPECT_EQ(collected.Get(otherPort, "DeviceID"), "0000:02:00.0");
}

TEST(NetworkPort, LeavesOutLoopbackAndFilesThatAreNotInterfaces) {
    TCollected collected;
    Collect("/sys/class/net/lo/type = 772\n/sys/class/net/bonding_masters = bond0\n", collected);
    for (const char* name : {ethernetPort, wifiPort, infiniBandPort, otherPort}) {
        EXPECT_EQ(collected.CountInstances(name), 0U) << name;
    }
}

TEST(NetworkPort, HasTheIdOfAVlan) {
    TCollected collected;
    Collect(
        MakeVirtualPort("eth0.12", "type = 1\nuevent = DEVTYPE=vlan\n") +
            MakeVirtualPort("br0", "type = 1\nbridge/bridge_id = 8000.525400b20001\n") +
            "/proc/net/vlan/config:\n| VLAN Dev name | VLAN ID\n| eth0.12 | 12 | eth0\n| br0 | 7 | eth0\n",
        collected);
    EXPECT_THAT(collected.GetAll(otherPort, "Name"), ElementsAre("br0", "eth0.12"));
    EXPECT_THAT(collected.GetAll(otherPort, "VLANID"), ElementsAre("absent", "12"));
}

TEST(NetworkPort, RefersToTheAddressesThatItCarries) {
    TMachine machine = ParseMachineTree(MakePort("eth0", card, "") + MakeVirtualPort("br0", "type = 1\n") +
                                        MakeVirtualPort("lo", "type = 772\n"));
    machine.calls.interfaceAddresses = {{"lo", std::string("\x7F\0\0\1", 4)},
                                        {"eth0", std::string("\x0A\0\0\5", 4)},
                                        {"eth0", std::string("\x0A\0\0\6", 4)},
                                        {"br0", std::string("\x0A\0\1\5", 4)}};
    TCollected collected;
    Collect(machine.files, machine.calls, collected);
    EXPECT_THAT(collected.GetAll("CIM_DeviceSAPImplementation", "Antecedent"),
                ElementsAre("CIM_NetworkPort.DeviceID=\"br0\"", "CIM_EthernetPort.DeviceID=\"0000:02:00.0\"",
                            "CIM_EthernetPort.DeviceID=\"0000:02:00.0\""));
    EXPECT_THAT(collected.GetAll("CIM_DeviceSAPImplementation", "Dependent"),
                ElementsAre("KELSG_IPProtocolEndpoint.ElementName=\"br0 10.0.1.5\"",
                            "KELSG_IPProtocolEndpoint.ElementName=\"eth0 10.0.0.5\"",
                            "KELSG_IPProtocolEndpoint.ElementName=\"eth0 10.0.0.6\""));
    EXPECT_THAT(collected.GetAll("KELSG_IPProtocolEndpoint", "ElementName"),
                ElementsAre("br0 10.0.1.5", "eth0 10.0.0.5", "eth0 10.0.0.6", "lo 127.0.0.1"));
}

}  // namespace
}  // namespace NVORHOST
