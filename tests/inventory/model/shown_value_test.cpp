#include "inventory/model/shown_value.h"

#include <gtest/gtest.h>

namespace NINVENTORY {
namespace {

std::string Shown(std::string_view resourceType, std::string name, std::string type, std::string value) {
    return ShowValue(resourceType, {std::move(name), std::move(type), EShape::scalar, {std::move(value)}});
}

TEST(ShownValue, HasTheUnitPeopleCountIn) {
    EXPECT_EQ(Shown("PhysicalMemory", "Capacity", "unsignedLong", "17179869184"), "16 GiB");
    EXPECT_EQ(Shown("OperatingSystem", "TotalVisibleMemorySize", "unsignedLong", "32521004"), "31.01 GiB");
    EXPECT_EQ(Shown("DiskDrive", "MaxMediaSize", "unsignedLong", "480103981"), "480 GB");
    EXPECT_EQ(Shown("DiskPartition", "PartitionSize", "unsignedLong", "3840755982336"), "3.84 TB");
    EXPECT_EQ(Shown("Processor", "MaxClockSpeed", "unsignedInt", "2300"), "2.3 GHz");
    EXPECT_EQ(Shown("Processor", "MaxClockSpeed", "unsignedInt", "800"), "800 MHz");
    EXPECT_EQ(Shown("PhysicalMemory", "Speed", "unsignedInt", "2133"), "2133 MT/s");
    EXPECT_EQ(Shown("USBPort", "MaxSpeed", "unsignedLong", "480000000"), "480 Mbit/s");
    EXPECT_EQ(Shown("USBPort", "MaxSpeed", "unsignedLong", "1500000"), "1.5 Mbit/s");
    EXPECT_EQ(Shown("OperatingSystem", "CurrentTimeZone", "short", "60"), "60 min");
}

TEST(ShownValue, CountsThousandthsInWholeUnits) {
    EXPECT_EQ(Shown("PowerSupply", "TotalOutputPower", "unsignedInt", "750000"), "750 W");
    EXPECT_EQ(Shown("PowerSupply", "TotalOutputPower", "unsignedInt", "900"), "900 mW");
    EXPECT_EQ(Shown("Battery", "DesignCapacity", "unsignedInt", "58331"), "58.331 Wh");
    EXPECT_EQ(Shown("PhysicalMemory", "ConfiguredVoltage", "unsignedShort", "1200"), "1.2 V");
}

TEST(ShownValue, HasTheUnitOfNumbersThatAreNotWholeOrNegative) {
    EXPECT_EQ(Shown("Chassis", "Height", "float", "3.5"), "3.5 in");
    EXPECT_EQ(Shown("OperatingSystem", "CurrentTimeZone", "short", "-300"), "-300 min");
}

TEST(ShownValue, WritesHardwareAddressesWithColons) {
    EXPECT_EQ(Shown("EthernetPort", "PermanentAddress", "string", "02005E10000A"), "02:00:5e:10:00:0a");
    EXPECT_EQ(Shown("EthernetPort", "PermanentAddress", "string", "0200x"), "0200x");
    EXPECT_EQ(ShowValue("NetworkPort",
                        {"NetworkAddresses", "string", EShape::array, {"02005E100001", "02005E100002"}}),
              "02:00:5e:10:00:01, 02:00:5e:10:00:02");
}

TEST(ShownValue, WritesLanesAsSlotsDo) {
    EXPECT_EQ(Shown("PCIPort", "LinkWidth", "unsignedShort", "16"), "x16");
    EXPECT_EQ(Shown("PCIPort", "MaxSpeed", "unsignedLong", "63015384615"), "63 Gbit/s");
    EXPECT_EQ(Shown("DiskDrive", "RotationRate", "unsignedInt", "15000"), "15000 1/min");
}

TEST(ShownValue, IsTheWordOfACode) {
    EXPECT_EQ(Shown("Processor", "Family", "unsignedShort", "179"), "Xeon");
    EXPECT_EQ(Shown("Processor", "UpgradeMethod", "unsignedShort", "43"), "Socket LGA2011-3");
    EXPECT_EQ(Shown("EthernetPort", "EnabledState", "unsignedShort", "6"), "Enabled but Offline");
    EXPECT_EQ(Shown("WiFiPort", "LinkTechnology", "unsignedShort", "11"), "Wireless LAN");
    EXPECT_EQ(Shown("CacheMemory", "WritePolicy", "unsignedShort", "3"), "Write Back");
    EXPECT_EQ(Shown("PhysicalMemory", "MemoryType", "unsignedShort", "26"), "DDR4");
    EXPECT_EQ(Shown("PhysicalMemory", "MemoryType", "unsignedShort", "999"), "999");
    EXPECT_EQ(ShowValue("DiskDrive", {"OperationalStatus", "unsignedShort", EShape::array, {"2", "11"}}),
              "OK, In Service");
}

TEST(ShownValue, IsAsWrittenForRegistersVersionsAndBooleans) {
    EXPECT_EQ(Shown("PCIDevice", "SubsystemVendorID", "unsignedShort", "32902"), "0x8086");
    EXPECT_EQ(Shown("USBController", "USBVersion", "unsignedShort", "528"), "2.10");
    EXPECT_EQ(Shown("DiskDrive", "MediaIsLocked", "boolean", "true"), "yes");
    EXPECT_EQ(Shown("DiskDrive", "MediaIsLocked", "boolean", "maybe"), "maybe");
}

TEST(ShownValue, KeepsTextsThatLookLikeNumbers) {
    EXPECT_EQ(Shown("PhysicalMemory", "SerialNumber", "string", "0012"), "0012");
    EXPECT_EQ(Shown("PhysicalMemory", "Capacity", "unsignedLong", "many"), "many");
}

TEST(ShownValue, IsEmptyForNull) {
    EXPECT_EQ(ShowValue("DiskDrive", {"TimeOfLastMount", "dateTime", EShape::null, {}}), "");
}

TEST(ShowBinary, RoundsToTwoDecimals) {
    EXPECT_EQ(ShowBinary(0), "0 B");
    EXPECT_EQ(ShowBinary(1023), "1023 B");
    EXPECT_EQ(ShowBinary(1536), "1.5 KiB");
    EXPECT_EQ(ShowBinary(UINT64_MAX), "16 EiB");
}

TEST(ShowDecimal, RoundsToThreeDigits) {
    EXPECT_EQ(ShowDecimal(0, "B"), "0 B");
    EXPECT_EQ(ShowDecimal(999, "B"), "999 B");
    EXPECT_EQ(ShowDecimal(31'914'983'424, "B"), "31.9 GB");
    EXPECT_EQ(ShowDecimal(999'999'999, "B"), "1 GB");
    EXPECT_EQ(ShowDecimal(10'000'000'000, "bit/s"), "10 Gbit/s");
}

}  // namespace
}  // namespace NINVENTORY
