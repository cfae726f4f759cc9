// The sources of a machine's identity, in the order of preference.
#include "tests/machine/collect/collect_fixture.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr const char* computer = "KELSG_ComputerSystem";

std::string Product(std::string_view tree) {
    TCollected collected;
    Collect(tree, collected);
    return collected.Get(computer, "ProductName");
}

TEST(ComputerSystem, FallsBackToTheBoardIfTheNamesOfTheSystemArePlaceholders) {
    TCollected collected;
    Collect(
        "/sys/firmware/dmi/tables/DMI smbios:\n"
        "| 1: 01 01 01 01 \"To Be Filled By O.E.M.\"\n"
        "| 2: 01 02 00 00 \"BoardMakers\" \"P5Q-E\"\n",
        collected);
    EXPECT_EQ(collected.Get(computer, "Manufacturer"), "BoardMakers");
    EXPECT_EQ(collected.Get(computer, "ProductName"), "P5Q-E");
    EXPECT_EQ(collected.Get(computer, "SerialNumber"), "absent");
    EXPECT_EQ(collected.Get(computer, "Name"), "absent");
}

TEST(ComputerSystem, FallsBackToTheKernelsExcerptIfTheTableIsDenied) {
    TCollected collected;
    Collect(
        "/sys/firmware/dmi/tables/DMI !denied\n"
        "/sys/class/dmi/id/sys_vendor = Maker\n"
        "/sys/class/dmi/id/product_name = Product\n"
        "/sys/class/dmi/id/product_serial = SN-1\n"
        "/sys/class/dmi/id/product_uuid = 4c4c4544-0042-3510-8054-b9c04f503231\n"
        "/sys/class/dmi/id/chassis_type = 7\n",
        collected);
    EXPECT_EQ(collected.Get(computer, "Manufacturer"), "Maker");
    EXPECT_EQ(collected.Get(computer, "ProductName"), "Product");
    EXPECT_EQ(collected.Get(computer, "SerialNumber"), "SN-1");
    EXPECT_EQ(collected.Get(computer, "Name"), "4C4C4544-0042-3510-8054-B9C04F503231");
    EXPECT_EQ(collected.Get(computer, "Description"), "Computer system, Tower");
}

TEST(ComputerSystem, LeavesOutPlaceholdersOfTheExcerpt) {
    TCollected collected;
    Collect(
        "/sys/class/dmi/id/product_name = Product\n"
        "/sys/class/dmi/id/product_serial = 0123456789\n"
        "/sys/class/dmi/id/product_uuid = 03000200-0400-0500-0006-000700080009\n",
        collected);
    EXPECT_EQ(collected.Get(computer, "SerialNumber"), "absent");
    EXPECT_EQ(collected.Get(computer, "Name"), "absent");
}

TEST(ComputerSystem, ReadsADeviceTree) {
    TCollected collected;
    Collect(
        "/proc/device-tree/model bytes:\n| \"Example Board 4\" 00\n"
        "/proc/device-tree/serial-number bytes:\n| \"10000000abcd\" 00\n"
        "@HypervisorSignature = KVMKVMKVM\n",
        collected);
    EXPECT_EQ(collected.Get(computer, "ProductName"), "Example Board 4");
    EXPECT_EQ(collected.Get(computer, "SerialNumber"), "10000000abcd");
}

TEST(ComputerSystem, TakesTheMostSpecificCompatibleNameOfADeviceTreeWithoutModel) {
    EXPECT_EQ(Product("/proc/device-tree/compatible bytes:\n| \"vendor,board\" 00 \"vendor,soc\" 00\n"),
              "vendor,board");
}

TEST(ComputerSystem, ReadsXensOwnIdentity) {
    TCollected collected;
    Collect(
        "/sys/hypervisor/type = xen\n"
        "/sys/hypervisor/uuid = 0a1b2c3d-0000-1111-2222-333344445555\n",
        collected);
    EXPECT_EQ(collected.Get(computer, "ProductName"), "Xen virtual machine");
    EXPECT_EQ(collected.Get(computer, "Name"), "0A1B2C3D-0000-1111-2222-333344445555");
    EXPECT_EQ(collected.Get(computer, "Description"), "Virtual machine, Xen");
}

TEST(ComputerSystem, NamesTheHypervisorByItsSignature) {
    EXPECT_EQ(Product("@HypervisorSignature = KVMKVMKVM\n"), "KVM virtual machine");
    EXPECT_EQ(Product("@HypervisorSignature = Microsoft Hv\n"), "Hyper-V virtual machine");
    EXPECT_EQ(Product("@HypervisorSignature = NobodyKnows\n"), "Virtual machine");
}

TEST(ComputerSystem, ReadsTheMakerOfTheAcpiTables) {
    constexpr std::string_view tree =
        "/sys/firmware/acpi/tables/FACP bytes:\n"
        "| \"FACP\" 00 00 00 00 00 00 \"MAKER BOARD-01\" 00 00 00 00 00 00 00 00 00 00 00 00\n";
    EXPECT_EQ(Product(tree), "BOARD-01");
}

TEST(ComputerSystem, FallsBackToTheProcessorForItsName) {
    EXPECT_EQ(Product("/proc/cpuinfo:\n| processor : 0\n| model name : Example CPU 9\n"),
              "Example CPU 9 computer");
    EXPECT_EQ(Product("@Architecture = x86_64\n"), "x86_64 computer");
    EXPECT_EQ(Product(""), "Computer");
}

std::string SerialNumber(const std::string& tree) {
    TCollected collected;
    Collect(tree, collected);
    return collected.Get(computer, "SerialNumber");
}

std::string Table(const std::string& lines) {
    return "/sys/firmware/dmi/tables/DMI smbios:\n" + lines;
}

constexpr const char* systemWithoutSerial = "| 1: 01 02 00 03 \"Maker\" \"Product\" \"Not Specified\"\n";
constexpr const char* chassis = "| 3: 00 03 00 01 00 \"CHASSIS-1\"\n";

TEST(ComputerSystem, FallsBackToTheSerialNumberOfItsOnlyChassis) {
    EXPECT_EQ(SerialNumber(Table(std::string(systemWithoutSerial) + chassis)), "CHASSIS-1");
    EXPECT_EQ(
        SerialNumber(Table("| 1: 01 02 00 03 \"Maker\" \"Product\" \"SYSTEM-1\"\n" + std::string(chassis))),
        "SYSTEM-1");
    EXPECT_EQ(SerialNumber(Table(std::string(systemWithoutSerial) + "| 3: 00 03 00 01 00 \"None\"\n")),
              "absent");
}

TEST(ComputerSystem, HasNoSerialNumberOfAChassisIfThereAreSeveral) {
    const std::string tree = Table(std::string(systemWithoutSerial) + chassis + "| 3: 00 03 00 00 00\n");
    EXPECT_EQ(SerialNumber(tree), "absent");
    EXPECT_EQ(SerialNumber(tree + "/sys/class/dmi/id/chassis_serial = CHASSIS-1\n"), "absent");
    // The table names no product, so the kernel's excerpt is read.
    EXPECT_EQ(SerialNumber(Table("| 1: 00 00 00 00\n" + std::string(chassis) + "| 3: 00 03 00 00 00\n") +
                           "/sys/class/dmi/id/product_name = Product\n"
                           "/sys/class/dmi/id/chassis_serial = CHASSIS-1\n"),
              "absent");
}

TEST(ComputerSystem, FallsBackToTheExcerptsChassisIfTheTableIsDenied) {
    const std::string excerpt =
        "/sys/firmware/dmi/tables/DMI !denied\n"
        "/sys/class/dmi/id/product_name = Product\n"
        "/sys/class/dmi/id/chassis_serial = CHASSIS-1\n";
    EXPECT_EQ(SerialNumber(excerpt), "CHASSIS-1");
    EXPECT_EQ(SerialNumber(excerpt + "/sys/class/dmi/id/product_serial = Default string\n"), "CHASSIS-1");
    EXPECT_EQ(SerialNumber(excerpt + "/sys/class/dmi/id/product_serial = SYSTEM-1\n"), "SYSTEM-1");
}

constexpr const char* systemWithUuid =
    "| 1: 01 02 00 00 44 45 4c 4c 42 00 10 35 80 54 b9 c0 4f 50 32 31 06 00 00 \"Maker\" \"Product\"\n";

std::string EntryPoint(const std::string& version) {
    return "/sys/firmware/dmi/tables/smbios_entry_point bytes:\n| \"_SM3_\" 1b 18 " + version +
           " 00 01 00 6b 06 00 00 90 f9 ff 3f 00 00 00 00\n";
}

TEST(ComputerSystem, OrdersItsUuidByTheVersionOfTheEntryPoint) {
    const auto name = [](const std::string& tree) {
        TCollected collected;
        Collect(tree, collected);
        return collected.Get(computer, "Name");
    };
    const std::string excerpt = "/sys/class/dmi/id/product_uuid = 0a1b2c3d-0000-1111-2222-333344445555\n";
    EXPECT_EQ(name(Table(systemWithUuid) + EntryPoint("03 02") + excerpt),
              "4C4C4544-0042-3510-8054-B9C04F503231");
    EXPECT_EQ(name(Table(systemWithUuid) + EntryPoint("02 05") + excerpt),
              "44454C4C-4200-1035-8054-B9C04F503231");
}

TEST(ComputerSystem, FallsBackToTheKernelsUuidWithoutAnEntryPoint) {
    const auto name = [](const std::string& tree) {
        TCollected collected;
        Collect(tree, collected);
        return collected.Get(computer, "Name");
    };
    EXPECT_EQ(name(Table(systemWithUuid) +
                   "/sys/class/dmi/id/product_uuid = 4c4c4544-0042-3510-8054-b9c04f503231\n"),
              "4C4C4544-0042-3510-8054-B9C04F503231");
    EXPECT_EQ(name(Table(systemWithUuid)), "absent");
    EXPECT_EQ(name(Table(systemWithUuid) + "/sys/firmware/dmi/tables/smbios_entry_point !denied\n"),
              "absent");
    EXPECT_EQ(name(Table(systemWithUuid) +
                   "/sys/firmware/dmi/tables/smbios_entry_point bytes:\n| \"_SM_\" 00 ff 02 08\n"),
              "absent");
}

std::string Description(const std::string& tree) {
    TCollected collected;
    Collect(tree, collected);
    return collected.Get(computer, "Description");
}

TEST(ComputerSystem, IsAVirtualMachineByTheProcessorsFlagAlsoWithAProductOfTheFirmware) {
    const std::string tree = Table("| 1: 01 02 00 00 \"Maker\" \"Product\"\n" + std::string(chassis)) +
                             "/proc/cpuinfo:\n| processor : 0\n| flags : fpu lm";
    EXPECT_EQ(Description(tree + " hypervisor\n"), "Virtual machine");
    EXPECT_EQ(Description(tree + " hypervisor\n@HypervisorSignature = KVMKVMKVM\n"), "Virtual machine, KVM");
    EXPECT_EQ(Description(tree + " hypervisor\n@HypervisorSignature = NobodyKnows\n"), "Virtual machine");
    EXPECT_EQ(Description(tree + "\n"), "Computer system, Desktop");
}

TEST(ComputerSystem, IsAVirtualMachineByTheFirmwaresCharacteristics) {
    const auto describe = [](const std::string& extensionBytes) {
        return Description(Table("| 0: 00 00 00 00 00 00 00 00 00 00 00 00 00 00" + extensionBytes + "\n" +
                                 "| 1: 01 02 00 00 \"Maker\" \"Product\"\n" + chassis));
    };
    EXPECT_EQ(describe(" 00 10"), "Virtual machine");
    EXPECT_EQ(describe(" 10 00"), "Computer system, Desktop");
    EXPECT_EQ(describe(" 10"), "Computer system, Desktop");
}

TEST(ComputerSystem, IsAVirtualMachineByTheKernelsHypervisor) {
    const std::string tree =
        "/sys/class/dmi/id/product_name = HVM domU\n/sys/class/dmi/id/chassis_type = 1\n";
    EXPECT_EQ(Description(tree + "/sys/hypervisor/type = xen\n"), "Virtual machine, Xen");
    EXPECT_EQ(Description(tree + "/sys/hypervisor/type = other\n"), "Virtual machine");
    EXPECT_EQ(Description(tree), "Computer system");
}

TEST(ComputerSystem, IsNotAVirtualMachineAsXensControlDomain) {
    EXPECT_EQ(Description("/sys/class/dmi/id/product_name = Product\n"
                          "/sys/class/dmi/id/chassis_type = 3\n"
                          "/sys/hypervisor/type = xen\n"
                          "/sys/hypervisor/properties/features = 00002f05\n"
                          "/proc/cpuinfo:\n| processor : 0\n| flags : fpu lm hypervisor\n"),
              "Computer system, Desktop");
}

TEST(ComputerSystem, HasTheWorstOfItsChassisStates) {
    const auto status = [](const std::string& states) {
        TCollected collected;
        Collect("/sys/firmware/dmi/tables/DMI smbios:\n| 3: 00 03 00 00 00 " + states + "\n", collected);
        return collected.Get(computer, "OperationalStatus");
    };
    EXPECT_EQ(status("03 03 03"), "{2}");
    EXPECT_EQ(status("03 04 03"), "{3}");
    EXPECT_EQ(status("06 04 05"), "{7}");
    EXPECT_EQ(status("02 03 02"), "{2}");
    EXPECT_EQ(status("02 02 02"), "{0}");
    EXPECT_EQ(status("00 00 00"), "absent");
}

TEST(ComputerSystem, KeepsTheIntactPartsOfAMalformedTable) {
    TCollected collected;
    Collect(
        "/sys/firmware/dmi/tables/DMI bytes:\n"
        "| 01 08 00 01 01 02 00 00 \"Maker\" 00 \"Product\" 00 00\n"
        "| 04 02 01 01 00 00 04 30 02 01 01\n",
        collected);
    EXPECT_EQ(collected.Get(computer, "ProductName"), "Product");
    EXPECT_EQ(collected.CountInstances("KELSG_Processor"), 0U);
}

}  // namespace
}  // namespace NVORHOST
