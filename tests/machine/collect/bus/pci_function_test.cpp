// Properties of PCI functions that no test machine covers.
#include "machine/collect/bus/pci_class_name.h"
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* device = "KELSG_PCIDevice";
constexpr const char* bridge = "KELSG_PCIBridge";

// One function of a class, "subclass base" as hexadecimal bytes, with further register lines.
std::string Function(const std::string& classBytes, const std::string& registers = "") {
    return "/sys/bus/pci/devices/0000:00:01.0/config registers 256:\n"
           "| 00: 86 80 34 12 00 00 00 00 00 00 " +
           classBytes + "\n" + registers;
}

std::string Get(const std::string& tree, const char* className, std::string_view property) {
    TCollected collected;
    Collect(tree, collected);
    return collected.Get(className, property);
}

TEST(PciFunctions, SupportTheProtocolOfTheirClass) {
    const auto protocol = [](const std::string& classBytes) {
        return Get(Function(classBytes), device, "ProtocolSupported");
    };
    EXPECT_EQ(protocol("01 01"), "37");
    EXPECT_EQ(protocol("06 01"), "48");
    EXPECT_EQ(protocol("03 0c"), "16");
    EXPECT_EQ(protocol("01 06"), "4");
    EXPECT_EQ(protocol("00 07"), "27");
    EXPECT_EQ(protocol("00 02"), "absent");
    EXPECT_EQ(protocol("00 01"), "absent");
}

TEST(PciFunctions, AreParallelScsiOnlyByTheirDriver) {
    const std::string tree = Function("00 01");
    const std::string link = "/sys/bus/pci/devices/0000:00:01.0/driver -> ../../../bus/pci/drivers/";
    EXPECT_EQ(Get(tree + link + "sym53c8xx\n", device, "ProtocolSupported"), "9");
    EXPECT_EQ(Get(tree + link + "virtio-pci\n", device, "ProtocolSupported"), "absent");
}

TEST(PciBridges, HaveTheTypeOfTheirSubclass) {
    const auto type = [](const std::string& classBytes, const std::string& registers = "| 0e: 01\n") {
        return Get(Function(classBytes, registers), bridge, "BridgeType");
    };
    EXPECT_EQ(type("04 06"), "4");
    EXPECT_EQ(type("07 06", "| 0e: 02\n"), "7");
    EXPECT_EQ(type("08 06"), "8");
    EXPECT_EQ(type("09 06"), "128");
    EXPECT_EQ(type("80 06"), "128");
}

TEST(PciBridges, ArePciExpressByTheirPortType) {
    const auto type = [](const std::string& flags) {
        return Get(Function("04 06", "| 06: 10\n| 0e: 01\n| 34: 40\n| 40: 10 00 " + flags + "\n"), bridge,
                   "BridgeType");
    };
    EXPECT_EQ(type("42 01"), "10");  // root port
    EXPECT_EQ(type("52 01"), "10");  // upstream
    EXPECT_EQ(type("62 01"), "10");  // downstream
    EXPECT_EQ(type("72 00"), "11");  // to PCI
    EXPECT_EQ(type("82 00"), "10");  // from PCI
    EXPECT_EQ(type("92 00"), "4");   // a value that no bridge should have
}

TEST(PciBridges, FollowTheirClassWithoutReadableRegisters) {
    TCollected collected;
    Collect(
        "/sys/bus/pci/devices/0000:00:01.0/vendor = 0x8086\n"
        "/sys/bus/pci/devices/0000:00:01.0/device = 0x1234\n"
        "/sys/bus/pci/devices/0000:00:01.0/class = 0x060400\n"
        "/sys/bus/pci/devices/0000:00:02.0/vendor = 0x8086\n"
        "/sys/bus/pci/devices/0000:00:02.0/device = 0x1235\n"
        "/sys/bus/pci/devices/0000:00:02.0/class = 0x060000\n"
        "/sys/bus/pci/devices/0000:00:03.0/vendor = 0x8086\n",
        collected);
    EXPECT_THAT(collected.GetAll(bridge, "DeviceID"), ElementsAre("0000:00:01.0"));
    EXPECT_THAT(collected.GetAll(device, "DeviceID"), ElementsAre("0000:00:02.0"));
    EXPECT_EQ(collected.Get(bridge, "SecondaryBusNumber"), "absent");
    EXPECT_EQ(collected.Get(device, "BridgeType"), "absent");
}

TEST(PciFunctions, LeaveOutMissingValues) {
    const std::string tree = Function("00 02", "| 2c: 00 00 34 12\n| 30: 01 00 00 00\n");
    EXPECT_EQ(Get(tree, device, "BaseAddress"), "absent");
    EXPECT_EQ(Get(tree, device, "SubsystemVendorID"), "absent");
    EXPECT_EQ(Get(tree, device, "SubsystemID"), "absent");
    EXPECT_EQ(Get(tree, device, "ExpansionROMBaseAddress"), "absent");
}

TEST(PciFunctions, HaveASelectTimingOnlyOnPci) {
    const auto timing = [](const std::string& status, const std::string& more = "") {
        return Get(Function("00 02", "| 06: " + status + "\n") + more, device, "DeviceSelectTiming");
    };
    const std::string express = "/sys/bus/pci/devices/0000:00:01.0/max_link_speed = 5 GT/s\n";
    EXPECT_EQ(timing("00 00"), "2");
    EXPECT_EQ(timing("00 02"), "3");
    EXPECT_EQ(timing("00 04"), "4");
    EXPECT_EQ(timing("00 06"), "5");
    EXPECT_EQ(timing("00 00", express), "absent");
}

class TSmallDatabase final : public IDeviceNames {
  public:
    TDeviceName FindPci(const TPciNumbers& numbers) const override {
        TDeviceName name;
        if (numbers.vendorId == 0x8086) {
            name.vendor = "Intel Corporation";
        }
        if (numbers.deviceId == 0x100E) {
            const bool isCard = numbers.subsystemVendorId == 0x1028 && numbers.subsystemId == 0x0102;
            name.device = isCard ? "82540EM (Sample Desktop Adapter)" : "82540EM";
        }
        return name;
    }
    TDeviceName FindUsb(std::uint16_t, std::uint16_t) const override { return {}; }
};

TEST(PciFunctions, TakeTheirNamesFromTheDatabase) {
    const TMachine machine = ParseMachineTree(
        "/sys/bus/pci/devices/0000:00:01.0/config registers 64:\n| 00: 86 80 0e 10\n| 0a: 00 02\n"
        "/sys/bus/pci/devices/0000:00:02.0/config registers 64:\n| 00: 86 80 34 12\n| 0a: 00 02\n"
        "/sys/bus/pci/devices/0000:00:03.0/config registers 64:\n| 00: f4 1a 34 12\n| 0a: 00 02\n");
    const TSmallDatabase names;
    TCollected collected;
    collected.reports = CollectAll({machine.files, machine.calls, collected.target, std::nullopt, &names});
    EXPECT_THAT(collected.GetAll(device, "ElementName"),
                ElementsAre("Intel Corporation 82540EM", "Intel Corporation Ethernet controller 8086:1234",
                            "Ethernet controller 1af4:1234"));
    EXPECT_THAT(collected.GetAll(device, "DeviceID"),
                ElementsAre("0000:00:01.0", "0000:00:02.0", "0000:00:03.0"));
}

TEST(PciFunctions, AreNamedByChipAndCard) {
    const TMachine machine = ParseMachineTree(
        "/sys/bus/pci/devices/0000:00:01.0/config registers 64:\n"
        "| 00: 86 80 0e 10\n| 0a: 00 02\n| 2c: 28 10 02 01\n");
    const TSmallDatabase names;
    TCollected collected;
    collected.reports = CollectAll({machine.files, machine.calls, collected.target, std::nullopt, &names});
    EXPECT_THAT(collected.GetAll(device, "ElementName"),
                ElementsAre("Intel Corporation 82540EM (Sample Desktop Adapter)"));
}

TEST(PciFunctions, AreCollectedFromATreeWithoutTheBus) {
    const std::string folder = "/sys/devices/pci0000:00/0000:00:1f.2/";
    const std::string tree = folder + "vendor = 0x8086\n" + folder + "device = 0x2922\n" + folder +
                             "class = 0x010601\n" + folder +
                             "modalias = pci:v00008086d00002922sv00001AF4sd00001100bc01sc06i01\n";
    EXPECT_EQ(Get(tree, device, "DeviceID"), "0000:00:1f.2");
    EXPECT_EQ(Get(tree, device, "SubsystemVendorID"), "6900");
    EXPECT_EQ(Get(tree, device, "SubsystemID"), "4352");
}

TEST(GetPciClassName, FallsBackToTheBaseClassAndToAWordForAll) {
    EXPECT_EQ(GetPciClassName(0x02, 0x00), "Ethernet controller");
    EXPECT_EQ(GetPciClassName(0x02, 0x80), "Network controller");
    EXPECT_EQ(GetPciClassName(0x77, 0x00), "PCI device");
}

}  // namespace
}  // namespace NVORHOST
