#include "machine/parse/smbios_memory.h"

#include "tests/machine/parse/structure_bytes.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

// The fields of a memory device that tests vary; the structure has version 3.3, up to 5Bh.
struct TDeviceFields {
    std::string totalWidth = "48 00";
    std::string dataWidth = "40 00";
    std::string size = "00 40";
    std::string speed = "6a 0a";
    std::string extendedSize = "00 00 00 00";
    std::string extendedSpeed = "00 00 00 00";
    std::string attributes = "02";
    std::string configuredSpeed = "60 09";
    std::string configuredVoltage = "e2 04";
    std::string extendedConfiguredSpeed = "00 00 00 00";
};

TStructureBytes MakeDevice(const TDeviceFields& fields) {
    const std::string zeros8 = " 00 00 00 00 00 00 00 00 ";
    return TStructureBytes("17: 00 10 fe ff " + fields.totalWidth + " " + fields.dataWidth + " " +
                               fields.size + " 09 00 01 02 1a 80 20 " + fields.speed + " 03 04 05 06 " +
                               fields.attributes + " " + fields.extendedSize + " " + fields.configuredSpeed +
                               " b0 04 78 05 " + fields.configuredVoltage +
                               " 03 08 00 00 00 00 00 00 00 00 00 00" + zeros8 + zeros8 + zeros8 + zeros8 +
                               fields.extendedSpeed + " " + fields.extendedConfiguredSpeed +
                               " \"DIMM_A1\" \"Bank 0\" \"Maker\" \"12345678\" \"Asset\" \"Part-1 \"",
                           0x1100);
}

TEST(ParseSmbiosMemoryDevice, ReadsEveryField) {
    const auto bytes = MakeDevice({});
    ASSERT_EQ(bytes.GetLength(), 0x5CU);
    const auto device = ParseSmbiosMemoryDevice(bytes.Get());
    EXPECT_EQ(device.handle, 0x1100);
    EXPECT_EQ(device.arrayHandle, 0x1000);
    EXPECT_EQ(device.totalWidthBits, 72);
    EXPECT_EQ(device.dataWidthBits, 64);
    EXPECT_TRUE(device.isPopulated);
    EXPECT_EQ(device.capacityBytes, 16'384ULL << 20);
    EXPECT_EQ(device.formFactor, 0x09);
    EXPECT_EQ(device.locator, "DIMM_A1");
    EXPECT_EQ(device.bank, "Bank 0");
    EXPECT_EQ(device.kind, 0x1A);
    EXPECT_EQ(device.detail, 0x2080);
    EXPECT_EQ(device.speed, 2666U);
    EXPECT_EQ(device.manufacturer, "Maker");
    EXPECT_EQ(device.serial, "12345678");
    EXPECT_EQ(device.part, "Part-1 ");
    EXPECT_EQ(device.rank, 2);
    EXPECT_EQ(device.configuredSpeed, 2400U);
    EXPECT_EQ(device.configuredMillivolts, 1250);
}

TEST(ParseSmbiosMemoryDevice, HasAFieldIfItsLengthIncludesIt) {
    using TDevice = TSmbiosMemoryDevice;
    constexpr TFieldEnd<TDevice> fields[] = {
        {"arrayHandle", 0x06, [](const TDevice& device) { return device.arrayHandle.has_value(); }},
        {"totalWidthBits", 0x0A, [](const TDevice& device) { return device.totalWidthBits.has_value(); }},
        {"dataWidthBits", 0x0C, [](const TDevice& device) { return device.dataWidthBits.has_value(); }},
        {"isPopulated", 0x0E, [](const TDevice& device) { return device.isPopulated; }},
        {"capacityBytes", 0x0E, [](const TDevice& device) { return device.capacityBytes.has_value(); }},
        {"formFactor", 0x0F, [](const TDevice& device) { return device.formFactor.has_value(); }},
        {"locator", 0x11, [](const TDevice& device) { return device.locator.has_value(); }},
        {"bank", 0x12, [](const TDevice& device) { return device.bank.has_value(); }},
        {"kind", 0x13, [](const TDevice& device) { return device.kind.has_value(); }},
        {"detail", 0x15, [](const TDevice& device) { return device.detail.has_value(); }},
        {"speed", 0x17, [](const TDevice& device) { return device.speed.has_value(); }},
        {"manufacturer", 0x18, [](const TDevice& device) { return device.manufacturer.has_value(); }},
        {"serial", 0x19, [](const TDevice& device) { return device.serial.has_value(); }},
        {"part", 0x1B, [](const TDevice& device) { return device.part.has_value(); }},
        {"rank", 0x1C, [](const TDevice& device) { return device.rank.has_value(); }},
        {"configuredSpeed", 0x22, [](const TDevice& device) { return device.configuredSpeed.has_value(); }},
        {"configuredMillivolts", 0x28,
         [](const TDevice& device) { return device.configuredMillivolts.has_value(); }},
    };
    const TStructureBytes whole = MakeDevice({});
    for (std::size_t length = 4; length <= whole.GetLength(); ++length) {
        const auto shortened = whole.Shortened(length);
        const TDevice device = ParseSmbiosMemoryDevice(shortened.Get());
        for (const auto& field : fields) {
            EXPECT_EQ(field.isFound(device), length >= field.end) << field.name << " at length " << length;
        }
    }
}

TSmbiosMemoryDevice ParseDevice(const TDeviceFields& fields) {
    const auto bytes = MakeDevice(fields);
    return ParseSmbiosMemoryDevice(bytes.Get());
}

TEST(ParseSmbiosMemoryDevice, ReadsSizesInMebibytesAndInKibibytes) {
    EXPECT_EQ(ParseDevice({.size = "01 00"}).capacityBytes, 1ULL << 20);
    EXPECT_EQ(ParseDevice({.size = "fe 7f"}).capacityBytes, 32'766ULL << 20);
    EXPECT_EQ(ParseDevice({.size = "01 80"}).capacityBytes, 1ULL << 10);
    EXPECT_EQ(ParseDevice({.size = "fe ff"}).capacityBytes, 32'766ULL << 10);
}

TEST(ParseSmbiosMemoryDevice, IsUnpopulatedForSizeZeroOnly) {
    EXPECT_FALSE(ParseDevice({.size = "00 00"}).isPopulated);
    EXPECT_EQ(ParseDevice({.size = "00 00"}).capacityBytes, std::nullopt);
    EXPECT_TRUE(ParseDevice({.size = "ff ff"}).isPopulated);
    EXPECT_EQ(ParseDevice({.size = "ff ff"}).capacityBytes, std::nullopt);
}

TEST(ParseSmbiosMemoryDevice, ReadsLargeSizesFromTheExtendedField) {
    EXPECT_EQ(ParseDevice({.size = "ff 7f", .extendedSize = "00 00 01 00"}).capacityBytes, 65'536ULL << 20);
    EXPECT_EQ(ParseDevice({.size = "ff 7f", .extendedSize = "00 00 01 80"}).capacityBytes, 65'536ULL << 20);
    EXPECT_EQ(ParseDevice({.size = "ff 7f", .extendedSize = "00 00 00 00"}).capacityBytes, std::nullopt);
    EXPECT_TRUE(ParseDevice({.size = "ff 7f", .extendedSize = "00 00 00 00"}).isPopulated);
}

TEST(ParseSmbiosMemoryDevice, ReadsTheLargestSizeWithoutAnExtendedField) {
    const auto bytes = MakeDevice({.size = "ff 7f"});
    const auto old = bytes.Shortened(0x1F);
    EXPECT_EQ(ParseSmbiosMemoryDevice(old.Get()).capacityBytes, 32'767ULL << 20);
}

TEST(ParseSmbiosMemoryDevice, LeavesUnknownWidthsAbsentAndKeepsZero) {
    EXPECT_EQ(ParseDevice({.totalWidth = "ff ff"}).totalWidthBits, std::nullopt);
    EXPECT_EQ(ParseDevice({.dataWidth = "ff ff"}).dataWidthBits, std::nullopt);
    EXPECT_EQ(ParseDevice({.dataWidth = "00 00"}).dataWidthBits, 0);
}

TEST(ParseSmbiosMemoryDevice, ReadsHighSpeedsFromTheExtendedField) {
    EXPECT_EQ(ParseDevice({.speed = "00 00"}).speed, std::nullopt);
    EXPECT_EQ(ParseDevice({.speed = "fe ff"}).speed, 65'534U);
    EXPECT_EQ(ParseDevice({.speed = "ff ff", .extendedSpeed = "70 11 01 00"}).speed, 70'000U);
    EXPECT_EQ(ParseDevice({.speed = "ff ff", .extendedSpeed = "70 11 01 80"}).speed, 70'000U);
    EXPECT_EQ(ParseDevice({.speed = "ff ff", .extendedSpeed = "00 00 00 00"}).speed, std::nullopt);
    const auto bytes = MakeDevice({.speed = "ff ff", .extendedSpeed = "70 11 01 00"});
    const auto old = bytes.Shortened(0x54);
    EXPECT_EQ(ParseSmbiosMemoryDevice(old.Get()).speed, std::nullopt);
}

TEST(ParseSmbiosMemoryDevice, ReadsHighConfiguredSpeedsFromTheExtendedField) {
    EXPECT_EQ(ParseDevice({.configuredSpeed = "00 00"}).configuredSpeed, std::nullopt);
    EXPECT_EQ(
        ParseDevice({.configuredSpeed = "ff ff", .extendedConfiguredSpeed = "70 11 01 80"}).configuredSpeed,
        70'000U);
    const auto bytes = MakeDevice({.configuredSpeed = "ff ff", .extendedConfiguredSpeed = "70 11 01 00"});
    const auto old = bytes.Shortened(0x58);
    EXPECT_EQ(ParseSmbiosMemoryDevice(old.Get()).configuredSpeed, std::nullopt);
}

TEST(ParseSmbiosMemoryDevice, LeavesUnknownRanksAndVoltagesAbsent) {
    EXPECT_EQ(ParseDevice({.attributes = "f0"}).rank, std::nullopt);
    EXPECT_EQ(ParseDevice({.attributes = "f4"}).rank, 4);
    EXPECT_EQ(ParseDevice({.configuredVoltage = "00 00"}).configuredMillivolts, std::nullopt);
}

TEST(ParseSmbiosMemoryArray, ReadsTheMaximumInKibibytesOrFromTheExtendedField) {
    const auto parse = [](const std::string& maximum, const std::string& extended) {
        const TStructureBytes bytes("16: 03 03 06 " + maximum + " fe ff 04 00 " + extended);
        return ParseSmbiosMemoryArray(bytes.Get()).maxCapacityBytes;
    };
    EXPECT_EQ(parse("00 00 00 02", ""), 32ULL << 30);
    EXPECT_EQ(parse("ff ff ff ff", ""), 0x3FFFFFFFC00ULL);
    EXPECT_EQ(parse("00 00 00 00", ""), std::nullopt);
    EXPECT_EQ(parse("00 00 00 80", "00 00 00 00 00 02 00 00"), 2ULL << 40);
    EXPECT_EQ(parse("00 00 00 80", "00 00 00 00 00 00 00 00"), std::nullopt);
    EXPECT_EQ(parse("00 00 00 80", "00 00 00 00 00 02 00"), std::nullopt);
}

TEST(ParseSmbiosMemoryArray, HasAFieldIfItsLengthIncludesIt) {
    const TStructureBytes whole("16: 03 04 06 00 00 00 80 fe ff 04 00", 0x1000);
    const auto array = ParseSmbiosMemoryArray(whole.Get());
    EXPECT_EQ(array.handle, 0x1000);
    EXPECT_EQ(array.location, 3);
    EXPECT_EQ(array.use, 4);
    EXPECT_EQ(array.errorCorrection, 6);
    EXPECT_EQ(array.slotCount, 4);
    const auto header = whole.Shortened(4);
    EXPECT_EQ(ParseSmbiosMemoryArray(header.Get()).location, std::nullopt);
    EXPECT_EQ(ParseSmbiosMemoryArray(header.Get()).use, std::nullopt);
    EXPECT_EQ(ParseSmbiosMemoryArray(header.Get()).errorCorrection, std::nullopt);
    EXPECT_EQ(ParseSmbiosMemoryArray(header.Get()).maxCapacityBytes, std::nullopt);
    EXPECT_EQ(ParseSmbiosMemoryArray(header.Get()).slotCount, std::nullopt);
}

std::optional<TAddressRange> ParseRange(const std::string& digits) {
    const TStructureBytes bytes("19: " + digits);
    return ParseSmbiosArrayAddress(bytes.Get()).range;
}

TEST(ParseSmbiosArrayAddress, CountsKibibytesThroughTheEndOfTheLast) {
    const TStructureBytes bytes("19: 00 04 00 00 ff ff 0f 00 00 10 01");
    const auto address = ParseSmbiosArrayAddress(bytes.Get());
    EXPECT_EQ(address.arrayHandle, 0x1000);
    EXPECT_EQ(address.range, (TAddressRange{0x100000, 0x3FFFFFFF}));
}

TEST(ParseSmbiosArrayAddress, ReadsExtendedAddressesInBytes) {
    const std::string plain = "ff ff ff ff ff ff ff ff 00 10 01 ";
    EXPECT_EQ(ParseRange(plain + "00 00 00 00 00 04 00 00 ff ff ff ff ff 07 00 00"),
              (TAddressRange{0x40000000000, 0x7FFFFFFFFFF}));
    EXPECT_EQ(ParseRange(plain + "00 00 00 00 00 04 00 00 ff ff ff ff ff 07 00"), std::nullopt);
    EXPECT_EQ(ParseRange(plain), std::nullopt);
}

TEST(ParseSmbiosArrayAddress, HasNoRangeForEmptyArraysAndReversedRanges) {
    EXPECT_EQ(ParseRange("00 00 00 00 00 00 00 00 00 10 01"), std::nullopt);
    EXPECT_EQ(ParseRange("00 00 10 00 ff ff 0f 00 00 10 01"), std::nullopt);
    EXPECT_EQ(ParseRange("00 00 00 00 01 00 00 00 00 10 01"), (TAddressRange{0, 0x7FF}));
}

TEST(ParseSmbiosArrayAddress, HasAFieldIfItsLengthIncludesIt) {
    const TStructureBytes whole("19: 00 00 00 00 ff ff 0f 00 00 10 01");
    for (std::size_t length = 4; length <= whole.GetLength(); ++length) {
        const auto shortened = whole.Shortened(length);
        const auto address = ParseSmbiosArrayAddress(shortened.Get());
        EXPECT_EQ(address.range.has_value(), length >= 0x0C) << length;
        EXPECT_EQ(address.arrayHandle.has_value(), length >= 0x0E) << length;
    }
}

TEST(ParseSmbiosDeviceAddress, LeavesReservedAndUnknownPositionsAbsent) {
    const auto parse = [](const std::string& positions) {
        const TStructureBytes bytes("20: 00 00 00 00 ff ff 0f 00 00 11 00 13 " + positions);
        return ParseSmbiosDeviceAddress(bytes.Get());
    };
    EXPECT_EQ(parse("01 02 01").deviceHandle, 0x1100);
    EXPECT_EQ(parse("01 02 01").rowPosition, 1);
    EXPECT_EQ(parse("01 02 01").interleavePosition, 2);
    EXPECT_EQ(parse("00 00 01").rowPosition, std::nullopt);
    EXPECT_EQ(parse("00 00 01").interleavePosition, 0);
    EXPECT_EQ(parse("ff ff 01").rowPosition, std::nullopt);
    EXPECT_EQ(parse("ff ff 01").interleavePosition, std::nullopt);
    EXPECT_EQ(parse("").rowPosition, std::nullopt);
    EXPECT_EQ(parse("01").interleavePosition, std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
