// Collectors of the firmware's structure table share the warning of a malformed table and the rows of their
// classes.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A board, a socket with a module, and after them a structure that is too short for its type, one that is
// shorter than its header, and a whole one.
constexpr const char* malformedTable =
    "/sys/firmware/dmi/tables/DMI bytes:\n"
    "| 02 08 00 02 01 02 00 00 \"Maker\" 00 \"Board\" 00 00\n"
    "| 11 15 00 11 00 10 fe ff 48 00 40 00 00 20 09 00 01 00 1a 00 00 \"DIMM_A1\" 00 00\n"
    "| 11 14 01 11 00 10 fe ff 48 00 40 00 ff 7f 09 00 01 00 1a 00 \"PHANTOM\" 00 00\n"
    "| 11 02 02 11 00 00\n"
    "| 11 15 03 11 00 10 fe ff 48 00 40 00 00 20 09 00 01 00 1a 00 00 \"DIMM_B1\" 00 00\n"
    "| 7f 04 04 11 00 00\n";

TEST(FirmwareTable, GivesTheDevicesBeforeAndAfterAMalformedStructure) {
    TCollected collected;
    Collect(malformedTable, collected);
    EXPECT_THAT(collected.GetAll("KELSG_Card", "Model"), ElementsAre("Board"));
    EXPECT_THAT(collected.GetAll("KELSG_SPDData", "Tag"), ElementsAre("DIMM_A1", "DIMM_B1"));
}

TEST(FirmwareTable, GivesOneWarningWhenItIsMalformed) {
    TCollected collected;
    Collect(malformedTable, collected);
    std::vector<std::string> warnings;
    for (const TCollectReport& report : collected.reports) {
        EXPECT_THAT(report.notes, IsEmpty()) << report.collector;
        warnings.insert(warnings.end(), report.warnings.begin(), report.warnings.end());
    }
    EXPECT_THAT(warnings,
                ElementsAre("malformed SMBIOS table: byte 80 of 122, after 3 structures: a structure is "
                            "shorter than its header; 1 structure shorter than the minimum length of "
                            "the type"));
}

// Firmware that pads names to a fixed width writes such texts.
TEST(FirmwareTable, RemovesThePaddingWithinNames) {
    TCollected collected;
    Collect(
        "/sys/firmware/dmi/tables/DMI smbios:\n"
        "| 2: 01 02 00 00 \"Maker   of  boards\" \"Board\"\n"
        "| 9: 01 06 05 03 04 00 00 04 00 \"PCI   1\"\n"
        "| 17: 00 10 fe ff 48 00 40 00 00 20 09 00 01 02 1a 80 20 6a 0a 03 00 00 04 \"DIMM  A1\" \"Bank 0\" "
        "\"Kingston       \" \"               HP647647-071-HYE\"\n",
        collected);
    EXPECT_EQ(collected.Get("KELSG_Card", "ElementName"), "Maker of boards Board");
    EXPECT_EQ(collected.Get("KELSG_Card", "Manufacturer"), "Maker   of  boards");
    EXPECT_EQ(collected.Get("KELSG_SystemSlot", "ElementName"), "PCI 1");
    EXPECT_EQ(collected.Get("KELSG_SystemSlot", "Tag"), "PCI   1");
    EXPECT_EQ(collected.Get("KELSG_SPDData", "ElementName"), "Kingston HP647647-071-HYE");
    EXPECT_EQ(collected.Get("KELSG_SPDData", "Tag"), "DIMM  A1");
}

// A machine with every property that these classes can have.
constexpr const char* richMachine =
    "/sys/firmware/dmi/tables/DMI smbios:\n"
    "| 2: 01 02 03 04 05 01 00 00 03 0a \"Maker\" \"Board\" \"A01\" \"SN-1\" \"Asset\"\n"
    "| 9: 01 b6 0d 04 04 02 00 04 03 00 00 05 00 \"PCIe Slot 2\"\n"
    "| 16: 03 03 06 00 00 00 01 fe ff 04 00\n"
    "| 17: 02 01 fe ff 48 00 40 00 00 20 09 00 01 02 1a 80 20 6a 0a 03 04 00 05 02 00 00 00 00 60 09 "
    "b0 04 78 05 e2 04 \"DIMM_A1\" \"Bank 0\" \"Maker\" "
    "\"1A2B3C4D\" \"PART-123\"\n"
    "| 19: 00 00 00 00 ff ff 7f 00 02 01 01\n"
    "| 20: 00 00 00 00 ff ff 7f 00 03 01 04 01 01 01 01\n"
    "/sys/bus/pci/slots/2/address = 0000:05:00\n"
    "/sys/bus/pci/slots/2/latch = 0\n"
    "/sys/firmware/memmap/0/start = 0x100000\n"
    "/sys/firmware/memmap/0/end = 0x1fffff\n"
    "/sys/firmware/memmap/0/type = System RAM\n";

// Linux has no source for these rows. Every other row reaches the namespace.
TEST(FirmwareTable, SetsEveryPropertyButThese) {
    const std::set<std::string_view> classes = {"KELSG_ACPI", "KELSG_Card", "KELSG_MAS", "KELSG_SPDData",
                                                "KELSG_SystemSlot"};
    TCollected collected;
    Collect(richMachine, collected);
    std::set<std::string> unset;
    for (const auto& cimClass : collected.target.GetClasses()) {
        if (!classes.contains(cimClass->GetName())) {
            continue;
        }
        ASSERT_EQ(cimClass->GetInstances().size(), 1U) << cimClass->GetName();
        for (const TPropertyDeclaration& declaration : cimClass->GetDeclarations()) {
            if (cimClass->GetInstances()[0]->Find(declaration.name) == nullptr) {
                unset.insert(cimClass->GetName() + "." + declaration.name);
            }
        }
    }
    EXPECT_THAT(
        unset,
        ElementsAre("KELSG_ACPI.DataOrganization", "KELSG_ACPI.DataRedundancy", "KELSG_ACPI.DeltaReservation",
                    "KELSG_ACPI.PackageRedundancy", "KELSG_Card.ManufactureDate", "KELSG_Card.PartNumber",
                    "KELSG_Card.SpecialRequirements", "KELSG_MAS.ConsumableBlocks",
                    "KELSG_MAS.DataOrganization", "KELSG_MAS.DataRedundancy", "KELSG_MAS.DeltaReservation",
                    "KELSG_MAS.PackageRedundancy", "KELSG_SPDData.ManufactureDate", "KELSG_SPDData.Model",
                    "KELSG_SPDData.Version", "KELSG_SystemSlot.ConnectorPinout",
                    "KELSG_SystemSlot.HeightAllowed", "KELSG_SystemSlot.LengthAllowed",
                    "KELSG_SystemSlot.ManufactureDate", "KELSG_SystemSlot.Manufacturer",
                    "KELSG_SystemSlot.Model", "KELSG_SystemSlot.NumPhysicalPins",
                    "KELSG_SystemSlot.PartNumber", "KELSG_SystemSlot.SerialNumber",
                    "KELSG_SystemSlot.ThermalRating", "KELSG_SystemSlot.Version"));
}

TEST(FirmwareTable, GivesNoWarningWhenItIsWellFormed) {
    TCollected collected;
    Collect(richMachine, collected);
    for (const TCollectReport& report : collected.reports) {
        EXPECT_THAT(report.notes, IsEmpty()) << report.collector;
        EXPECT_THAT(report.warnings, IsEmpty()) << report.collector;
    }
}

}  // namespace
}  // namespace NVORHOST
