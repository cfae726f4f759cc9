// Slots of the firmware's table, joined with the PCI functions in them and the kernel's slots.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* slot = "KELSG_SystemSlot";

std::string Table(const std::string& lines) {
    return "/sys/firmware/dmi/tables/DMI smbios:\n" + lines;
}

// A slot of version 2.6: type, width, usage, number, and bus with device and function; all hexadecimal
// digits.
std::string Slot(const std::string& name, const std::string& type, const std::string& usage = "03",
                 const std::string& place = "ff ff", const std::string& segment = "00 00") {
    return "| 9: 01 " + type + " 0d " + usage + " 04 02 00 04 03 " + segment + " " + place + " \"" + name +
           "\"\n";
}

std::string Function(const std::string& address, const std::string& classCode) {
    const std::string folder = "/sys/bus/pci/devices/" + address;
    return folder + "/class = 0x" + classCode + "\n" + folder + "/vendor = 0x8086\n" + folder +
           "/device = 0x1521\n";
}

TEST(SystemSlots, HaveEveryPropertyOfTheTable) {
    TCollected collected;
    Collect(Table(Slot("PCIe Slot 2", "b6")), collected);
    ASSERT_EQ(collected.CountInstances(slot), 1U);
    EXPECT_EQ(collected.Get(slot, "ElementName"), "PCIe Slot 2");
    EXPECT_EQ(collected.Get(slot, "Description"), "System slot, PCI Express 3 x16, available");
    EXPECT_EQ(collected.Get(slot, "Tag"), "PCIe Slot 2");
    EXPECT_EQ(collected.Get(slot, "ConnectorGender"), "3");
    EXPECT_EQ(collected.Get(slot, "ConnectorLayout"), "23");
    EXPECT_EQ(collected.Get(slot, "MaxDataWidth"), "1");
    EXPECT_EQ(collected.Get(slot, "Number"), "2");
    EXPECT_EQ(collected.Get(slot, "SpecialPurpose"), "false");
    EXPECT_EQ(collected.Get(slot, "SupportsHotPlug"), "true");
    EXPECT_EQ(collected.Get(slot, "OpenSwitch"), "absent");
}

TEST(SystemSlots, HaveNoKindForAnUnlistedCode) {
    TCollected collected;
    Collect(Table("| 9: 01 7f 7f 04 04 02 00 00 \"Odd\"\n"), collected);
    EXPECT_EQ(collected.Get(slot, "Description"), "System slot, in use");
    for (const char* property : {"ConnectorGender", "ConnectorLayout", "MaxDataWidth", "Number",
                                 "SpecialPurpose", "SupportsHotPlug"}) {
        EXPECT_EQ(collected.Get(slot, property), "absent") << property;
    }
}

TEST(SystemSlots, HaveTheSizeOfTheirPhysicalWidthIfTheTypeHasNone) {
    const auto layout = [](const std::string& type, const std::string& width) {
        TCollected collected;
        Collect(Table("| 9: 01 " + type + " 0d 03 04 01 00 04 01 00 00 ff ff 0a 00 00 " + width + " \"S\"\n"),
                collected);
        return collected.Get(slot, "ConnectorLayout");
    };
    EXPECT_EQ(layout("b1", "0b"), "22");
    EXPECT_EQ(layout("b1", "0c"), "18");  // twelve lanes
    EXPECT_EQ(layout("b1", "02"), "18");
    EXPECT_EQ(layout("b6", "0b"), "23");
    EXPECT_EQ(layout("06", "0b"), "16");
}

TEST(SystemSlots, NameTheFunctionInThem) {
    TCollected collected;
    Collect(Table(Slot("S", "b6", "04", "05 00")) + Function("0000:05:00.0", "020000"), collected);
    EXPECT_EQ(collected.Get(slot, "Description"),
              "System slot, PCI Express 3 x16, in use by Ethernet controller at 0000:05:00.0");
}

class TCardDatabase final : public IDeviceNames {
  public:
    TDeviceName FindPci(const TPciNumbers& numbers) const override {
        const bool isCard = numbers.subsystemVendorId == 0x1028 && numbers.subsystemId == 0x0102;
        return {"Maker", isCard ? "Chip (Card)" : "Chip"};
    }
    TDeviceName FindUsb(std::uint16_t, std::uint16_t) const override { return {}; }
};

TEST(SystemSlots, NameTheCardInThemByChipAndCard) {
    const std::string folder = "/sys/bus/pci/devices/0000:05:00.0/";
    const TMachine machine =
        ParseMachineTree(Table(Slot("S", "b6", "04", "05 00")) + folder + "vendor = 0x8086\n" + folder +
                         "device = 0x100e\n" + folder + "class = 0x020000\n" + folder +
                         "subsystem_vendor = 0x1028\n" + folder + "subsystem_device = 0x0102\n");
    const TCardDatabase names;
    TCollected collected;
    collected.reports = CollectAll({machine.files, machine.calls, collected.target, std::nullopt, &names});
    EXPECT_EQ(collected.Get(slot, "Description"),
              "System slot, PCI Express 3 x16, in use by Maker Chip (Card) at 0000:05:00.0");
}

TEST(SystemSlots, NameTheFunctionBelowThePortThatTheFirmwareReports) {
    TCollected collected;
    const std::string port = "/sys/bus/pci/devices/0000:00:1c.0";
    Collect(Table(Slot("S", "b6", "04", "00 e0")) + Function("0000:00:1c.0", "060400") + port +
                "/0000:02:00.0/\n" + port + "/0000:02:00.0:pcie001/\n" + port + "/power/\n" +
                Function("0000:02:00.0", "010802"),
            collected);
    EXPECT_EQ(collected.Get(slot, "Description"),
              "System slot, PCI Express 3 x16, in use by Non-Volatile memory controller at 0000:02:00.0");
}

TEST(SystemSlots, NameNoFunctionInAnEmptySlot) {
    const auto describe = [](const std::string& line, const std::string& functions) {
        TCollected collected;
        Collect(Table(line) + functions, collected);
        return collected.Get(slot, "Description");
    };
    const std::string inUse = "System slot, PCI Express 3 x16, in use";
    // The addresses of a port without a device, of no device, and of the host bridge, which firmware uses as
    // a placeholder.
    EXPECT_EQ(describe(Slot("S", "b6", "04", "00 e0"), Function("0000:00:1c.0", "060400")), inUse);
    EXPECT_EQ(describe(Slot("S", "b6", "04", "05 00"), ""), inUse);
    EXPECT_EQ(describe(Slot("S", "b6", "04", "00 00"), Function("0000:00:00.0", "060000")), inUse);
    // The firmware reports this slot as available.
    EXPECT_EQ(describe(Slot("S", "b6", "03", "05 00"), Function("0000:05:00.0", "020000")),
              "System slot, PCI Express 3 x16, available");
}

TEST(SystemSlots, HaveTheLatchOfTheKernelsSlotAtTheirAddress) {
    const auto openSwitch = [](const std::string& latch) {
        TCollected collected;
        Collect(Table(Slot("S", "b6", "04", "05 08", "01 00")) +
                    "/sys/bus/pci/slots/7/address = 0001:05:01\n/sys/bus/pci/slots/8/address = 0000:05:01\n"
                    "/sys/bus/pci/slots/8/latch = 1\n" +
                    latch,
                collected);
        return collected.Get(slot, "OpenSwitch");
    };
    EXPECT_EQ(openSwitch("/sys/bus/pci/slots/7/latch = 1\n"), "true");
    EXPECT_EQ(openSwitch("/sys/bus/pci/slots/7/latch = 0\n"), "false");
    EXPECT_EQ(openSwitch(""), "absent");
}

TEST(SystemSlots, HaveTheirAddressesInTheKeyIfTheirNamesAreEqual) {
    TCollected collected;
    Collect(Table(Slot("SSD", "20", "04", "05 00") + Slot("SSD", "20", "04", "06 08", "01 00") +
                  Slot("SSD", "20", "03", "ff ff", "ff ff") + Slot("N/A", "20", "04", "07 00")),
            collected);
    EXPECT_THAT(collected.GetAll(slot, "Tag"),
                ElementsAre("SSD@0000:05:00.0", "SSD@0001:06:01.0", "SSD@slot 3", "slot 4"));
}

TEST(SystemSlots, HaveTheirPlacesInTheKeyIfNameAndAddressAreEqual) {
    TCollected collected;
    Collect(Table(Slot("SSD", "20", "04", "00 00") + Slot("SSD", "20", "04", "00 00")), collected);
    EXPECT_THAT(collected.GetAll(slot, "Tag"), ElementsAre("SSD@slot 1", "SSD@slot 2"));
}

TEST(SystemSlots, HaveTheirPlacesInTheKeyWithoutAddresses) {
    TCollected collected;
    Collect(Table(Slot("SSD", "20", "03", "ff ff", "ff ff") + Slot("PCIe", "b6") +
                  Slot("SSD", "20", "03", "ff ff", "ff ff") + Slot("N/A", "b6")),
            collected);
    EXPECT_THAT(collected.GetAll(slot, "Tag"), ElementsAre("SSD@slot 1", "PCIe", "SSD@slot 3", "slot 4"));
    EXPECT_THAT(collected.GetAll(slot, "ElementName"), ElementsAre("SSD", "PCIe", "SSD", "slot 4"));
    EXPECT_THAT(collected.GetReport("slot").notes,
                ElementsAre("2 slots share the key SSD; their positions tell them apart"));
}

}  // namespace
}  // namespace NVORHOST
