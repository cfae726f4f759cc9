#include "writer/resource_lists.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

// The table once more, spelled out: list, type, class, flag.
constexpr char listing[] = R"(PhysicalElement Slot KELSG_SystemSlot false
PhysicalElement PhysicalMemory KELSG_SPDData false
PhysicalElement Card KELSG_Card false
LogicalDevice Processor KELSG_Processor true
LogicalDevice DiskDrive KELSG_DiskDrive false
LogicalDevice DiskDrive CIM_DiskDrive true
LogicalDevice DisketteDrive KELSG_DisketteDrive false
LogicalDevice TapeDrive KELSG_TapeDrive false
LogicalDevice OpticalDrive KELSG_CDROMDrive false
LogicalDevice DisketteDrive KELSG_DVDDrive false
LogicalDevice DiskPartition CIM_DiskPartition true
LogicalDevice Memory KELSG_ACPI true
LogicalDevice Memory KELSG_MAS false
LogicalDevice LogicalVolume KELSG_LSILogicalDisk false
LogicalDevice LogicalVolume KELSG_LSIIDELogicalDisk false
LogicalDevice LogicalVolume KELSG_srLogicalDisk false
LogicalDevice LogicalVolume KELSG_LogicalDisk false
LogicalDevice IDEController KELSG_IDEProtocolController true
LogicalDevice USBPort KELSG_USBPort false
LogicalDevice DisplayController KELSG_VideoController false
LogicalDevice PCIDevice KELSG_PCIDevice false
LogicalDevice PCIBridge KELSG_PCIBridge false
LogicalDevice USBController KELSG_USBController false
)";

TEST(ResourceLists, HaveTwentyThreeRowsInTheOrderOfTheDocument) {
    std::ostringstream rows;
    for (const TListRow& row : GetResourceLists()) {
        rows << *row.list << ' ' << row.type.name << ' ' << row.source.name << ' '
             << (row.flag ? "true" : "false") << '\n';
    }
    EXPECT_EQ(rows.str(), listing);
    EXPECT_EQ(GetResourceLists().size(), 23U);
}

}  // namespace
