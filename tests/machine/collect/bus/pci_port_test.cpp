#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* port = "CIM_PCIPort";
const std::string folder = "/sys/bus/pci/devices/0000:05:00.0";

// A network adapter with the attributes in `lines`, each a name and its value.
std::string Function(const std::vector<std::string>& lines) {
    std::string tree =
        folder + "/config registers 64:\n| 00: 86 80 0e 10 07 00 10 00 02 00 00 02\n| 34: 40\n";
    for (const std::string& line : lines) {
        tree += folder + "/" + line + "\n";
    }
    return tree;
}

const std::vector<std::string> link{"current_link_speed = 2.5 GT/s PCIe", "current_link_width = 4",
                                    "max_link_speed = 16.0 GT/s PCIe", "max_link_width = 8"};

std::string FunctionWithLink(const std::vector<std::string>& more) {
    std::vector<std::string> lines = link;
    lines.insert(lines.end(), more.begin(), more.end());
    return Function(lines);
}

TEST(PciPorts, HaveTheirLinkAndPlace) {
    TCollected collected;
    Collect(FunctionWithLink({"power_state = D0", "numa_node = 1", "serial_number = a0-36-9f-ff-ff-01-02-03",
                              "driver -> ../../../../bus/pci/drivers/ixgbe",
                              "iommu_group -> ../../../../kernel/iommu_groups/42"}) +
                "/sys/bus/pci/slots/3/address = 0000:05:00\n",
            collected);
    ASSERT_EQ(collected.CountInstances(port), 1U);
    EXPECT_EQ(collected.Get(port, "ElementName"), "Ethernet controller 8086:100e");
    EXPECT_EQ(collected.Get(port, "Description"),
              "PCI Express function, link x4 at 2.5 GT/s, at most x8 at 16 GT/s");
    EXPECT_EQ(collected.Get(port, "DeviceID"), "0000:05:00.0");
    EXPECT_EQ(collected.Get(port, "Speed"), "8000000000");
    EXPECT_EQ(collected.Get(port, "MaxSpeed"), "126030769230");
    EXPECT_EQ(collected.Get(port, "LinkWidth"), "4");
    EXPECT_EQ(collected.Get(port, "MaxLinkWidth"), "8");
    EXPECT_EQ(collected.Get(port, "NUMANode"), "1");
    EXPECT_EQ(collected.Get(port, "PowerState"), "D0");
    EXPECT_EQ(collected.Get(port, "OtherIdentifyingInfo"), "{ixgbe, 3, 42, a0-36-9f-ff-ff-01-02-03}");
    EXPECT_EQ(collected.Get(port, "IdentifyingDescriptions"), "{Driver, Slot, IOMMU group, Serial number}");
}

TEST(PciPorts, HaveNoLinkOfSleepingFunctions) {
    for (const char* state : {"power_state = D3cold", "power_state = D3hot", "power_state = unknown",
                              "power/runtime_status = suspended"}) {
        TCollected collected;
        Collect(FunctionWithLink({state, "serial_number = a0-36-9f-ff-ff-01-02-03"}), collected);
        EXPECT_EQ(collected.Get(port, "Description"), "PCI Express function") << state;
        for (const char* property :
             {"Speed", "MaxSpeed", "LinkWidth", "MaxLinkWidth", "OtherIdentifyingInfo"}) {
            EXPECT_EQ(collected.Get(port, property), "absent") << state << " " << property;
        }
    }
}

TEST(PciPorts, HaveALinkOfAwakeFunctionsOnOlderKernels) {
    for (const char* status : {"power/runtime_status = active", "power/runtime_status = unsupported"}) {
        TCollected collected;
        Collect(FunctionWithLink({status}), collected);
        EXPECT_EQ(collected.Get(port, "Speed"), "8000000000") << status;
        EXPECT_EQ(collected.Get(port, "PowerState"), "absent") << status;
    }
}

TEST(PciPorts, HaveOnlyTheMaximumOfALinkThatIsDown) {
    TCollected collected;
    Collect(Function({"power_state = D0", "current_link_speed = 2.5 GT/s PCIe", "current_link_width = 0",
                      "max_link_speed = 8.0 GT/s PCIe", "max_link_width = 1"}),
            collected);
    EXPECT_EQ(collected.Get(port, "Description"), "PCI Express function, at most x1 at 8 GT/s");
    EXPECT_EQ(collected.Get(port, "Speed"), "absent");
    EXPECT_EQ(collected.Get(port, "LinkWidth"), "absent");
    EXPECT_EQ(collected.Get(port, "MaxSpeed"), "7876923076");
}

TEST(PciPorts, HaveNoUnknownValues) {
    TCollected collected;
    Collect(Function({"power_state = D0", "numa_node = -1", "max_link_speed = Unknown",
                      "max_link_width = 255", "current_link_speed = Unknown", "current_link_width = 63"}),
            collected);
    ASSERT_EQ(collected.CountInstances(port), 1U);
    for (const char* property : {"Speed", "MaxSpeed", "LinkWidth", "MaxLinkWidth", "NUMANode",
                                 "OtherIdentifyingInfo", "IdentifyingDescriptions"}) {
        EXPECT_EQ(collected.Get(port, property), "absent") << property;
    }
}

TEST(PciPorts, AreListedForConventionalFunctionsToo) {
    TCollected collected;
    Collect(Function({"ari_enabled = 0", "power_state = D0"}), collected);
    EXPECT_THAT(collected.GetAll(port, "Description"), ElementsAre("PCI function"));
}

}  // namespace
}  // namespace NVORHOST
