#include "machine/parse/pci_config.h"

#include "tests/machine/system/machine_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

struct TRegister {
    std::size_t offset;
    std::string_view bytes;
};

std::string MakeConfig(const std::vector<TRegister>& registers, std::size_t size = pciConfigBytes) {
    std::string config(size, '\0');
    for (const TRegister& row : registers) {
        const std::string bytes = ParseByteLine(row.bytes);
        config.replace(row.offset, bytes.size(), bytes);
    }
    return config;
}

TEST(ParsePciConfig, ReadsADevice) {
    const auto config = ParsePciConfig(MakeConfig({
        {0x00, "86 80 0e 10"},
        {0x06, "30 02"},
        {0x09, "01 00 02"},
        {0x0C, "10 40 80 80"},
        {0x10, "00 00 b8 fe 01 c0 00 00 00 00 00 00 04 00 00 fe 01 00 00 00 00 00 00 00"},
        {0x2C, "f4 1a 00 11"},
        {0x30, "01 00 04 fe"},
        {0x3D, "01 ff 05"},
    }));
    ASSERT_TRUE(config);
    EXPECT_EQ(config->vendorId, 0x8086);
    EXPECT_EQ(config->deviceId, 0x100E);
    EXPECT_EQ(config->status, 0x0230);
    EXPECT_EQ(config->programmingInterface, 0x01);
    EXPECT_EQ(config->subclass, 0x00);
    EXPECT_EQ(config->baseClass, 0x02);
    EXPECT_EQ(config->cacheLineSize, 16);
    EXPECT_EQ(config->latencyTimer, 64);
    EXPECT_EQ(config->header, EPciHeader::device);
    EXPECT_EQ(config->selfTest, 0x80);
    EXPECT_THAT(config->baseAddresses, ElementsAre(0xFEB80000, 0xC001, 0, 0xFE000004, 1, 0));
    EXPECT_EQ(config->subsystemVendorId, 0x1AF4);
    EXPECT_EQ(config->subsystemId, 0x1100);
    EXPECT_EQ(config->expansionRom, 0xFE040001);
    EXPECT_EQ(config->interruptPin, 1);
    EXPECT_EQ(config->minGrant, 0xFF);
    EXPECT_EQ(config->maxLatency, 5);
    EXPECT_EQ(config->primaryBus, std::nullopt);
    EXPECT_EQ(config->ioBase, std::nullopt);
    EXPECT_EQ(config->memoryBase, std::nullopt);
}

TEST(ParsePciConfig, ReadsABridge) {
    const auto config = ParsePciConfig(MakeConfig({
        {0x00, "86 80 3e 24"},
        {0x0A, "04 06"},
        {0x0E, "81"},
        {0x10, "04 00 b8 fe"},
        {0x18, "00 02 05 20 c0 d0"},
        {0x20, "80 fe 90 fe"},
        {0x38, "01 00 00 fd"},
        {0x3D, "02 03 04"},
    }));
    ASSERT_TRUE(config);
    EXPECT_EQ(config->header, EPciHeader::bridge);
    EXPECT_THAT(config->baseAddresses, ElementsAre(0xFEB80004, 0));
    EXPECT_EQ(config->primaryBus, 0);
    EXPECT_EQ(config->secondaryBus, 2);
    EXPECT_EQ(config->subordinateBus, 5);
    EXPECT_EQ(config->ioBase, 0xC0);
    EXPECT_EQ(config->ioLimit, 0xD0);
    EXPECT_EQ(config->memoryBase, 0xFE80);
    EXPECT_EQ(config->memoryLimit, 0xFE90);
    EXPECT_EQ(config->expansionRom, 0xFD000001);
    EXPECT_EQ(config->interruptPin, 2);
    EXPECT_EQ(config->minGrant, std::nullopt);
    EXPECT_EQ(config->maxLatency, std::nullopt);
    EXPECT_EQ(config->subsystemVendorId, std::nullopt);
}

TEST(ParsePciConfig, ReadsACardBusBridge) {
    const auto registers = std::vector<TRegister>{
        {0x00, "80 11 76 04"}, {0x0A, "07 06"},       {0x0E, "02"},
        {0x10, "00 00 a0 fe"}, {0x18, "05 06 09 b0"}, {0x40, "28 10 18 05"},
    };
    const auto config = ParsePciConfig(MakeConfig(registers));
    ASSERT_TRUE(config);
    EXPECT_EQ(config->header, EPciHeader::cardBus);
    EXPECT_THAT(config->baseAddresses, ElementsAre(0xFEA00000));
    EXPECT_EQ(config->primaryBus, 5);
    EXPECT_EQ(config->secondaryBus, 6);
    EXPECT_EQ(config->subordinateBus, 9);
    EXPECT_EQ(config->ioBase, std::nullopt);
    EXPECT_EQ(config->subsystemVendorId, 0x1028);
    EXPECT_EQ(config->subsystemId, 0x0518);
    // An offset after the bytes that every user may read.
    EXPECT_EQ(ParsePciConfig(MakeConfig(registers).substr(0, 64))->subsystemVendorId, std::nullopt);
}

// A root port whose second capability is PCI Express. The low bits of a pointer are reserved: 62h points to
// 60h.
std::string MakeExpressFunction() {
    return MakeConfig({
        {0x00, "86 80 02 3c"},
        {0x06, "10 00"},
        {0x0A, "04 06 00 00 01"},
        {0x34, "40"},
        {0x40, "0d 62"},
        {0x60, "10 00 42 01"},
    });
}

TEST(ParsePciConfig, ReadsTheSubsystemOfABridgeFromItsCapability) {
    const std::vector<TRegister> registers = {
        {0x00, "86 80 02 3c"}, {0x06, "10 00"},       {0x0A, "04 06 00 00 01"},
        {0x34, "40"},          {0x40, "0d 00 00 00"}, {0x44, "28 10 8e 02"},
    };
    EXPECT_EQ(ParsePciConfig(MakeConfig(registers))->subsystemVendorId, 0x1028);
    EXPECT_EQ(ParsePciConfig(MakeConfig(registers))->subsystemId, 0x028E);
    EXPECT_EQ(ParsePciConfig(MakeConfig(registers).substr(0, 0x46))->subsystemId, std::nullopt);
    EXPECT_EQ(ParsePciConfig(MakeConfig(registers).substr(0, 64))->subsystemVendorId, std::nullopt);
}

TEST(ParsePciConfig, ReadsThePortTypeFromTheCapabilityList) {
    std::string config = MakeExpressFunction();
    EXPECT_EQ(ParsePciConfig(config)->expressPortType, 4);
    config[0x06] = '\0';  // without the status bit, the pointer is invalid
    EXPECT_EQ(ParsePciConfig(config)->expressPortType, std::nullopt);
}

TEST(ParsePciConfig, IgnoresMalformedCapabilityLists) {
    const auto portType = [](const std::vector<TRegister>& list) {
        auto registers = list;
        registers.push_back({0x00, "86 80 02 3c"});
        registers.push_back({0x06, "10 00"});
        return ParsePciConfig(MakeConfig(registers))->expressPortType;
    };
    EXPECT_EQ(portType({{0x34, "40"}, {0x40, "01 40"}}), std::nullopt);  // a loop
    EXPECT_EQ(portType({{0x34, "40"}, {0x40, "01 08"}}), std::nullopt);  // into the header
    EXPECT_EQ(portType({{0x34, "fc"}, {0xFC, "ff ff ff ff"}}),
              std::nullopt);  // registers of a suspended function
    EXPECT_EQ(portType({{0x34, "00"}, {0x40, "10 00 42 01"}}), std::nullopt);  // empty
    EXPECT_EQ(portType({{0x34, "fc"}, {0xFC, "10 00 42 01"}}), 4);             // at the last offset
}

TEST(ParsePciConfig, ReturnsNulloptForTruncatedMissingAndUnknownFunctions) {
    const std::string config = MakeExpressFunction();
    for (std::size_t length = 0; length < pciHeaderBytes; ++length) {
        EXPECT_FALSE(ParsePciConfig(config.substr(0, length))) << length;
    }
    EXPECT_FALSE(ParsePciConfig(std::string(pciConfigBytes, '\xFF')));
    EXPECT_FALSE(ParsePciConfig(MakeConfig({{0x00, "86 80"}, {0x0E, "03"}})));
}

TEST(ParsePciConfig, ReadsTheSameHeaderFromEveryPrefixThatHoldsIt) {
    const std::string config = MakeExpressFunction();
    const auto whole = ParsePciConfig(config);
    ASSERT_TRUE(whole);
    for (std::size_t length = pciHeaderBytes; length < config.size(); ++length) {
        const auto torn = ParsePciConfig(config.substr(0, length));
        ASSERT_TRUE(torn) << length;
        EXPECT_EQ(torn->baseAddresses, whole->baseAddresses) << length;
        EXPECT_TRUE(!torn->expressPortType || torn->expressPortType == whole->expressPortType) << length;
    }
}

}  // namespace
}  // namespace NVORHOST
