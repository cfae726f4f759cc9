// PCI functions before they become instances, from their registers or from the kernel's copy.
#include "machine/collect/bus/pci_source.h"

#include "tests/machine/system/machine_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

const std::string folder = "/sys/bus/pci/devices/0000:00:01.0";

std::vector<TPciSource> Read(const std::string& tree) {
    return ReadPciSources(ParseMachineTree(tree).files);
}

// A device with a capability list, of `size` readable bytes.
std::string WithCapability(const std::string& size, const std::string& capability) {
    return folder + "/config registers " + size + ":\n| 00: 86 80 34 12\n| 06: 10\n| 0b: 02\n| 34: 40\n" +
           capability;
}

TEST(PciSources, AreInTheOrderOfTheirAddresses) {
    const std::string header = "/config registers 64:\n| 00: 86 80 34 12\n";
    std::vector<std::string> addresses;
    for (const TPciSource& source :
         Read("/sys/bus/pci/devices/0001:00:00.0" + header + "/sys/bus/pci/devices/0000:0a:00.0" + header +
              "/sys/bus/pci/devices/0000:00:1f.3" + header)) {
        addresses.push_back(source.address);
    }
    EXPECT_THAT(addresses, ElementsAre("0000:00:1f.3", "0000:0a:00.0", "0001:00:00.0"));
}

TEST(PciSources, TakeTheirNumbersFromTheRegisters) {
    const auto sources = Read(folder + "/config registers 64:\n| 00: 86 80 34 12\n| 09: 30 03 0c\n" + folder +
                              "/vendor = 0xdead\n");
    ASSERT_EQ(sources.size(), 1U);
    EXPECT_EQ(sources[0].vendorId, 0x8086);
    EXPECT_EQ(sources[0].deviceId, 0x1234);
    EXPECT_EQ(sources[0].baseClass, 0x0C);
    EXPECT_EQ(sources[0].subclass, 0x03);
    EXPECT_EQ(sources[0].programmingInterface, 0x30);
}

TEST(PciSources, FallBackToTheKernelsCopyOfUnreadableRegisters) {
    const auto sources = Read(folder + "/config !denied\n" + folder + "/vendor = 0x1af4\n" + folder +
                              "/device = 0x1042\n" + folder + "/class = 0x0c0330\n");
    ASSERT_EQ(sources.size(), 1U);
    EXPECT_FALSE(sources[0].config.has_value());
    EXPECT_EQ(sources[0].vendorId, 0x1AF4);
    EXPECT_EQ(sources[0].deviceId, 0x1042);
    EXPECT_EQ(sources[0].baseClass, 0x0C);
    EXPECT_EQ(sources[0].subclass, 0x03);
    EXPECT_EQ(sources[0].programmingInterface, 0x30);
    EXPECT_FALSE(sources[0].isExpress);
}

TEST(PciSources, FallBackToTheModaliasForMissingNumbers) {
    const auto sources = Read(folder + "/config !denied\n" + folder +
                              "/modalias = pci:v00001AF4d00001042sv00001AF4sd00001100bc01sc00i00\n");
    ASSERT_EQ(sources.size(), 1U);
    EXPECT_EQ(sources[0].vendorId, 0x1AF4);
    EXPECT_EQ(sources[0].deviceId, 0x1042);
    EXPECT_EQ(sources[0].subsystemVendorId, 0x1AF4);
    EXPECT_EQ(sources[0].subsystemId, 0x1100);
    EXPECT_EQ(sources[0].baseClass, 0x01);
}

TEST(PciSources, TakeTheSubsystemFromTheRegistersElseTheAttributesElseTheModalias) {
    const std::string attributes =
        folder + "/subsystem_vendor = 0x1028\n" + folder + "/subsystem_device = 0x0102\n";
    const std::string modalias =
        folder + "/modalias = pci:v00008086d00001234sv0000103Csd00000203bc06sc04i00\n";
    const std::string device = folder + "/config registers 64:\n| 00: 86 80 34 12\n| 2c: f4 1a 01 11\n";
    const std::string bridge = folder + "/config registers 64:\n| 00: 86 80 34 12\n| 0a: 04 06\n| 0e: 01\n";
    const std::string kept =
        folder + "/vendor = 0x8086\n" + folder + "/device = 0x1234\n" + folder + "/class = 0x020000\n";
    const auto subsystem = [](const std::string& tree) {
        const auto sources = Read(tree);
        return sources.size() == 1 ? std::pair(sources[0].subsystemVendorId, sources[0].subsystemId)
                                   : std::pair(std::uint16_t{0xFFFF}, std::uint16_t{0xFFFF});
    };
    EXPECT_THAT(subsystem(device + attributes + modalias), Pair(0x1AF4, 0x1101));
    EXPECT_THAT(subsystem(bridge + attributes + modalias), Pair(0x1028, 0x0102));
    EXPECT_THAT(subsystem(bridge + modalias), Pair(0x103C, 0x0203));
    EXPECT_THAT(subsystem(kept + attributes + modalias), Pair(0x1028, 0x0102));
    EXPECT_THAT(subsystem(kept + modalias), Pair(0x103C, 0x0203));
    EXPECT_THAT(subsystem(kept), Pair(0, 0));
}

TEST(PciSources, AreFoundBelowTheirHostBridgesInATreeWithoutTheBus) {
    const std::string root = "/sys/devices/pci0000:00/";
    std::vector<std::string> found;
    for (const TPciSource& source :
         Read(root + "0000:00:1c.0/0000:02:00.0/vendor = 0x8086\n" + root +
              "0000:00:1c.0/0000:02:00.0/device = 0x1234\n" + root +
              "0000:00:1c.0/0000:02:00.0/class = 0x020000\n" + root +
              "0000:00:1c.0/config registers 64:\n| 00: 86 80 34 12\n| 0a: 04 06\n| 0e: 01\n" + root +
              "0000:00:1c.0/0000:00:1c.0:pcie001/vendor = 0x8086\n" + root +
              "0000:00:02.0/config registers 64:\n| 00: 86 80 34 12\n" +
              "/sys/devices/pci10000:e0/10000:e0:06.0/config registers 64:\n| 00: 86 80 34 12\n" +
              "/sys/devices/platform/0000:00:03.0/config registers 64:\n| 00: 86 80 34 12\n")) {
        found.push_back(source.folder);
    }
    EXPECT_THAT(found,
                ElementsAre(root + "0000:00:02.0", root + "0000:00:1c.0", root + "0000:00:1c.0/0000:02:00.0",
                            "/sys/devices/pci10000:e0/10000:e0:06.0"));
}

TEST(PciSources, LeaveOutUnknownValues) {
    EXPECT_THAT(Read(folder + "/vendor = 0x1af4\n" + folder + "/device = 0x1042\n"), IsEmpty());
    EXPECT_THAT(
        Read(folder + "/vendor = 0x1af4\n" + folder + "/device = 0x10042\n" + folder + "/class = 0x020000\n"),
        IsEmpty());
    EXPECT_THAT(Read("/sys/bus/pci/devices !denied\n"), IsEmpty());
}

TEST(PciSources, AreExpressByTheirLinkSpeed) {
    EXPECT_TRUE(Read(WithCapability("64", "") + folder + "/max_link_speed = 8.0 GT/s PCIe\n")[0].isExpress);
}

TEST(PciSources, AreExpressByTheirCapabilityOnKernelsThatShowNoLinkSpeed) {
    EXPECT_TRUE(Read(WithCapability("256", "| 40: 10 00 02\n"))[0].isExpress);
    EXPECT_FALSE(Read(WithCapability("256", "| 40: 01 00 02\n"))[0].isExpress);
    EXPECT_FALSE(Read(folder + "/config registers 256:\n| 00: 86 80 34 12\n| 0b: 02\n")[0].isExpress);
}

TEST(PciSources, MayBeExpressIfTheCapabilitiesCannotBeRead) {
    EXPECT_TRUE(Read(WithCapability("64", ""))[0].isExpress);
}

TEST(PciSources, AreNotExpressOnKernelsThatWouldShowALinkSpeed) {
    EXPECT_FALSE(Read(WithCapability("64", "") + folder + "/ari_enabled = 0\n")[0].isExpress);
}

TEST(IsBridge, FollowsTheHeaderType) {
    const auto isBridge = [](const std::string& lines) {
        return IsBridge(Read(folder + "/config registers 64:\n| 00: 86 80 34 12\n" + lines)[0]);
    };
    EXPECT_TRUE(isBridge("| 0a: 04 06\n| 0e: 01\n"));
    EXPECT_TRUE(isBridge("| 0a: 04 06\n| 0e: 81\n"));
    EXPECT_TRUE(isBridge("| 0a: 07 06\n| 0e: 02\n"));
    EXPECT_FALSE(isBridge("| 0a: 01 06\n| 0e: 80\n"));
}

TEST(IsBridge, FollowsTheClassWithoutRegisters) {
    const auto isBridge = [](const std::string& classCode) {
        return IsBridge(Read(folder + "/vendor = 0x8086\n" + folder + "/device = 0x1234\n" + folder +
                             "/class = " + classCode + "\n")[0]);
    };
    EXPECT_TRUE(isBridge("0x060400"));
    EXPECT_TRUE(isBridge("0x060700"));
    EXPECT_TRUE(isBridge("0x060940"));
    EXPECT_FALSE(isBridge("0x060100"));
    EXPECT_FALSE(isBridge("0x010400"));
}

}  // namespace
}  // namespace NVORHOST
