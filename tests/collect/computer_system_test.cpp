// Where a machine's identity comes from, source by source.
#include "tests/collect/collect_fixture.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr const char* computer = "KELSG_ComputerSystem";

std::string Product(std::string_view tree) {
    TCollected collected;
    Collect(tree, collected);
    return collected.Get(computer, "ProductName");
}

TEST(ComputerSystem, IsKnownByItsBoardWhereTheSystemsNamesAreFillers) {
    TCollected collected;
    Collect(
        "/sys/firmware/dmi/tables/DMI smbios:\n"
        "| 1: 01 01 01 01 \"To Be Filled By O.E.M.\"\n"
        "| 2: 01 02 \"BoardMakers\" \"P5Q-E\"\n",
        collected);
    EXPECT_EQ(collected.Get(computer, "Manufacturer"), "BoardMakers");
    EXPECT_EQ(collected.Get(computer, "ProductName"), "P5Q-E");
    EXPECT_EQ(collected.Get(computer, "SerialNumber"), "absent");
    EXPECT_EQ(collected.Get(computer, "Name"), "absent");
}

TEST(ComputerSystem, TakesTheKernelsExcerptWhereTheTableIsClosed) {
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

TEST(ComputerSystem, LeavesPlaceholderIdentitiesOfTheExcerptOut) {
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
    EXPECT_EQ(collected.Get(computer, "Description"), "Virtual machine");
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

TEST(ComputerSystem, IsNamedByItsProcessorWhenNothingElseTells) {
    EXPECT_EQ(Product("/proc/cpuinfo:\n| processor : 0\n| model name : Example CPU 9\n"),
              "Example CPU 9 computer");
    EXPECT_EQ(Product("@Architecture = x86_64\n"), "x86_64 computer");
    EXPECT_EQ(Product(""), "Computer");
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

TEST(ComputerSystem, YieldsWhatIsSoundOfAMalformedTable) {
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
