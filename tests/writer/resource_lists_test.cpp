#include "writer/resource_lists.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

// The expected rows: list, type, class.
constexpr char listing[] = R"(PhysicalElement Slot KELSG_SystemSlot
PhysicalElement PhysicalMemory KELSG_SPDData
PhysicalElement Card KELSG_Card
LogicalDevice Processor KELSG_Processor
LogicalDevice DiskDrive KELSG_DiskDrive
LogicalDevice DiskDrive CIM_DiskDrive
LogicalDevice DisketteDrive KELSG_DisketteDrive
LogicalDevice TapeDrive KELSG_TapeDrive
LogicalDevice OpticalDrive KELSG_CDROMDrive
LogicalDevice DisketteDrive KELSG_DVDDrive
LogicalDevice DiskPartition CIM_DiskPartition
LogicalDevice Memory KELSG_ACPI
LogicalDevice Memory KELSG_MAS
LogicalDevice LogicalVolume KELSG_LSILogicalDisk
LogicalDevice LogicalVolume KELSG_LSIIDELogicalDisk
LogicalDevice LogicalVolume KELSG_srLogicalDisk
LogicalDevice LogicalVolume KELSG_LogicalDisk
LogicalDevice IDEController KELSG_IDEProtocolController
LogicalDevice USBPort KELSG_USBPort
LogicalDevice DisplayController KELSG_VideoController
LogicalDevice PCIDevice KELSG_PCIDevice
LogicalDevice PCIBridge KELSG_PCIBridge
LogicalDevice USBController KELSG_USBController
)";

TEST(ResourceLists, HaveTwentyThreeRowsInTheOrderOfTheDocument) {
    std::ostringstream rows;
    for (const TListRow& row : GetResourceLists()) {
        rows << *row.list << ' ' << row.type.name << ' ' << row.source.name << '\n';
    }
    EXPECT_EQ(rows.str(), listing);
    EXPECT_EQ(GetResourceLists().size(), 23U);
}

}  // namespace
