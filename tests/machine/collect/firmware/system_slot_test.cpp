// Slots of the firmware's table, joined with the PCI functions in them and the kernel's slots.
#include "machine/collect/firmware/slot_kind.h"
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

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

TEST(SystemSlots, NameTheFunctionBehindThePortThatTheFirmwareGives) {
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
    // A port that leads nowhere, an address that nothing answers to, and the host bridge at the address that
    // means none.
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

// ---- code tables

// ConnectorLayout of every code that has one.
TEST(FindSlotKind, ListsTheCodesOfTheReferenceAndNoOther) {
    const std::map<int, int> layouts = {
        {0x01, 1},  {0x02, 0},  {0x03, 7},  {0x04, 7},  {0x05, 7},  {0x06, 16}, {0x07, 7},  {0x08, 7},
        {0x09, 1},  {0x0A, 1},  {0x0B, 1},  {0x0C, 1},  {0x0D, 7},  {0x0E, 16}, {0x0F, 7},  {0x10, 7},
        {0x11, 7},  {0x12, 17}, {0x13, 7},  {0x14, 1},  {0x15, 1},  {0x16, 1},  {0x17, 1},  {0x18, 1},
        {0x19, 1},  {0x1A, 1},  {0x1B, 1},  {0x1C, 1},  {0x1D, 1},  {0x1E, 1},  {0x1F, 1},  {0x20, 1},
        {0x21, 1},  {0x22, 1},  {0x23, 1},  {0x24, 1},  {0x25, 1},  {0x26, 1},  {0x27, 1},  {0x28, 1},
        {0x30, 1},  {0xA0, 1},  {0xA1, 1},  {0xA2, 1},  {0xA3, 1},  {0xA4, 1},  {0xA5, 18}, {0xA6, 19},
        {0xA7, 20}, {0xA8, 21}, {0xA9, 22}, {0xAA, 23}, {0xAB, 18}, {0xAC, 19}, {0xAD, 20}, {0xAE, 21},
        {0xAF, 22}, {0xB0, 23}, {0xB1, 18}, {0xB2, 19}, {0xB3, 20}, {0xB4, 21}, {0xB5, 22}, {0xB6, 23},
        {0xB8, 18}, {0xB9, 19}, {0xBA, 20}, {0xBB, 21}, {0xBC, 22}, {0xBD, 23}, {0xBE, 18}, {0xBF, 19},
        {0xC0, 20}, {0xC1, 21}, {0xC2, 22}, {0xC3, 23}, {0xC4, 18}, {0xC5, 1},  {0xC6, 1},
    };
    for (int code = 0; code <= 0xFF; ++code) {
        const TSlotKind* kind = FindSlotKind(static_cast<std::uint8_t>(code));
        ASSERT_EQ(kind != nullptr, layouts.contains(code)) << code;
        if (kind != nullptr) {
            EXPECT_EQ(kind->connectorLayout, layouts.at(code)) << code;
            EXPECT_EQ(kind->code, code);
            EXPECT_EQ(kind->name.empty(), code <= 0x02) << code;
        }
    }
}

TEST(FindSlotKind, MarksSlotsOfSpecialPurpose) {
    EXPECT_EQ(FindSlotKind(0x01)->specialPurpose, std::nullopt);
    EXPECT_EQ(FindSlotKind(0x02)->specialPurpose, std::nullopt);
    for (int code = 0x03; code <= 0xFF; ++code) {
        if (const TSlotKind* kind = FindSlotKind(static_cast<std::uint8_t>(code))) {
            EXPECT_EQ(kind->specialPurpose, code >= 0x09 && code <= 0x0C) << code;
        }
    }
}

TEST(FindSlotKind, MapsCardEdgesAndNumberedSlots) {
    EXPECT_EQ(FindSlotKind(0x06)->connector, ESlotConnector::cardEdge);
    EXPECT_EQ(FindSlotKind(0xA5)->connector, ESlotConnector::cardEdge);
    EXPECT_EQ(FindSlotKind(0x07)->connector, ESlotConnector::socket);
    EXPECT_EQ(FindSlotKind(0x14)->connector, ESlotConnector::socket);
    EXPECT_EQ(FindSlotKind(0x04)->number, ESlotNumber::given);
    EXPECT_EQ(FindSlotKind(0x14)->number, ESlotNumber::given);
    EXPECT_EQ(FindSlotKind(0xC6)->number, ESlotNumber::given);
    EXPECT_EQ(FindSlotKind(0x03)->number, ESlotNumber::none);
    EXPECT_EQ(FindSlotKind(0x07)->number, ESlotNumber::none);
}

TEST(FindMaxDataWidth, CountsBitsAndCallsLanesOther) {
    const std::map<int, int> widths = {{0x01, 1},  {0x02, 0},   {0x03, 8}, {0x04, 16}, {0x05, 32},
                                       {0x06, 64}, {0x07, 128}, {0x08, 1}, {0x09, 1},  {0x0A, 1},
                                       {0x0B, 1},  {0x0C, 1},   {0x0D, 1}, {0x0E, 1}};
    for (int code = 0; code <= 0xFF; ++code) {
        const auto width = FindMaxDataWidth(static_cast<std::uint8_t>(code));
        ASSERT_EQ(width.has_value(), widths.contains(code)) << code;
        EXPECT_EQ(width.value_or(0), width ? widths.at(code) : 0) << code;
    }
}

TEST(FindExpressLayout, MapsTheSizesThatCimHas) {
    const std::map<int, int> layouts = {{0x08, 19}, {0x09, 20}, {0x0A, 21},
                                        {0x0B, 22}, {0x0D, 23}, {0x0E, 24}};
    for (int code = 0; code <= 0xFF; ++code) {
        const auto layout = FindExpressLayout(static_cast<std::uint8_t>(code));
        ASSERT_EQ(layout.has_value(), layouts.contains(code)) << code;
        EXPECT_EQ(layout.value_or(0), layout ? layouts.at(code) : 0) << code;
    }
}

TEST(FindSlotUsage, NamesAvailableInUseAndUnavailable) {
    EXPECT_EQ(FindSlotUsage(1), std::nullopt);
    EXPECT_EQ(FindSlotUsage(2), std::nullopt);
    EXPECT_EQ(FindSlotUsage(3), "available");
    EXPECT_EQ(FindSlotUsage(4), "in use");
    EXPECT_EQ(FindSlotUsage(5), "unavailable");
    EXPECT_EQ(FindSlotUsage(6), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
