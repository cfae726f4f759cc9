#include "redaction/inventory/device_key.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

// Writes the parts as "mark|identity|rest".
std::string Split(std::string_view type, std::string_view key) {
    const TDeviceKey parts = ParseDeviceKey(type, key);
    return std::string(parts.mark) + "|" + std::string(parts.identity) + "|" + std::string(parts.rest);
}

TEST(ParseDeviceKey, SeparatesTheMarkOfAWorldWideName) {
    EXPECT_EQ(Split("DiskDrive", "naa.5000c500a1b2c3d4"), "naa.|5000c500a1b2c3d4|");
    EXPECT_EQ(Split("LogicalVolume", "mpath-3600a098000000001"), "mpath-|3600a098000000001|");
    EXPECT_TRUE(ParseDeviceKey("DiskDrive", "eui.0025388b01a2b3c4").isWorldWide);
}

TEST(ParseDeviceKey, SeparatesPositionNumberAndPartition) {
    EXPECT_EQ(Split("DiskDrive", "SAME01@0000:00:1f.2/host-1/0:0:0"), "|SAME01|@0000:00:1f.2/host-1/0:0:0");
    EXPECT_EQ(Split("DiskDrive", "SAME01#2"), "|SAME01|#2");
    EXPECT_EQ(Split("DiskPartition", "naa.5000c500a1b2c3d4-part10"), "naa.|5000c500a1b2c3d4|-part10");
    EXPECT_EQ(Split("DiskPartition", "1a2b3c4d-01"), "|1a2b3c4d-01|");
}

TEST(ParseDeviceKey, SeparatesTheNumberOfAUnit) {
    EXPECT_EQ(Split("DiskDrive", "ZTA0M00001-n1"), "|ZTA0M00001|-n1");
    EXPECT_EQ(Split("DiskPartition", "ZTA0M00001-n1-part2"), "|ZTA0M00001|-n1-part2");
    EXPECT_EQ(Split("DiskDrive", "20120926571200-1"), "|20120926571200|-1");
    EXPECT_EQ(Split("DiskDrive", "WD-WCC4E1234567"), "|WD-WCC4E1234567|");
}

TEST(ParseDeviceKey, FindsNoIdentityInPositionsAndNames) {
    EXPECT_EQ(Split("DiskDrive", "0000:00:06.0/0:0:0"), "||0000:00:06.0/0:0:0");
    EXPECT_EQ(Split("DiskDrive", "0000:00:03.0"), "||0000:00:03.0");
    EXPECT_EQ(Split("DisketteDrive", "floppy.0"), "||floppy.0");
    EXPECT_EQ(Split("LogicalVolume", "md127"), "||md127");
    EXPECT_EQ(Split("LocalFileSystem", "/boot/efi"), "||/boot/efi");
    EXPECT_EQ(Split("DiskDrive", ""), "||");
}

TEST(ParseCutKey, SeparatesTheDigest) {
    const std::string start(47, 'a');
    EXPECT_EQ(ParseCutKey(start + "~0123456789abcdef").start, start + "~");
    EXPECT_EQ(ParseCutKey(start + "~0123456789abcdef").digest, "0123456789abcdef");
    EXPECT_EQ(ParseCutKey("short~0123456789abcdef").digest, "");
}

}  // namespace
}  // namespace NVORHOST
