// Names from the system's hardware database, which may be missing.
#include "machine/names/hardware_database.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace NVORHOST {
namespace {

// Unassigned numbers, which have no name with or without a database.
constexpr std::uint16_t unknownVendor = 0xE1E2;
constexpr std::uint16_t unknownDevice = 0xE1E2;
constexpr std::uint16_t intel = 0x8086;
constexpr std::uint16_t linuxFoundation = 0x1D6B;

bool HasDatabase() {
    constexpr const char* places[] = {"/etc/systemd/hwdb/hwdb.bin",     "/etc/udev/hwdb.bin",
                                      "/usr/lib/systemd/hwdb/hwdb.bin", "/lib/systemd/hwdb/hwdb.bin",
                                      "/usr/lib/udev/hwdb.bin",         "/lib/udev/hwdb.bin"};
    return std::any_of(std::begin(places), std::end(places),
                       [](const char* place) { return std::filesystem::exists(place); });
}

TEST(HardwareDatabase, ReturnsNoNameForUnassignedNumbers) {
    const THardwareDatabase names;
    EXPECT_EQ(names.FindPci({unknownVendor, unknownDevice}).vendor, std::nullopt);
    EXPECT_EQ(names.FindPci({unknownVendor, unknownDevice}).device, std::nullopt);
    EXPECT_EQ(names.FindUsb(unknownVendor, unknownDevice).vendor, std::nullopt);
    EXPECT_EQ(names.FindUsb(unknownVendor, unknownDevice).device, std::nullopt);
}

TEST(HardwareDatabase, CanBeDestroyedWithoutASearch) {
    const THardwareDatabase names;
    const THardwareDatabase others;
}

TEST(HardwareDatabase, ReturnsNoNamesWithoutADatabase) {
    if (HasDatabase()) {
        GTEST_SKIP() << "this system has a hardware database";
    }
    const THardwareDatabase names;
    EXPECT_EQ(names.FindPci({intel, 0x100E}).vendor, std::nullopt);
    EXPECT_EQ(names.FindUsb(linuxFoundation, 0x0002).vendor, std::nullopt);
}

TEST(HardwareDatabase, ReturnsNamesOfWellKnownVendors) {
    if (!HasDatabase()) {
        GTEST_SKIP() << "this system has no hardware database";
    }
    const THardwareDatabase names;
    EXPECT_EQ(names.FindPci({intel, 0x100E}).vendor, "Intel Corporation");
    EXPECT_EQ(names.FindUsb(linuxFoundation, 0x0002).vendor, "Linux Foundation");
    EXPECT_EQ(names.FindUsb(linuxFoundation, 0x0002).device, "2.0 root hub");
}

TEST(HardwareDatabase, ReturnsADeviceNameWithoutAVendorName) {
    if (!HasDatabase()) {
        GTEST_SKIP() << "this system has no hardware database";
    }
    const THardwareDatabase names;
    const auto device = names.FindPci({intel, 0x100E}).device;
    ASSERT_TRUE(device.has_value());
    EXPECT_TRUE(device->starts_with("82540EM")) << *device;
}

// The card has a separate entry below the entry of its chip.
TEST(HardwareDatabase, ReturnsTheNamesOfChipAndCard) {
    if (!HasDatabase()) {
        GTEST_SKIP() << "this system has no hardware database";
    }
    const THardwareDatabase names;
    EXPECT_EQ(names.FindPci({intel, 0x100E, intel, 0x001E, 0x02, 0x00, 0x00}).device,
              "82540EM Gigabit Ethernet Controller (PRO/1000 MT Desktop Adapter)");
    EXPECT_EQ(names.FindPci({intel, 0x100E, unknownVendor, unknownDevice, 0x02, 0x00, 0x00}).device,
              "82540EM Gigabit Ethernet Controller");
}

TEST(HardwareDatabase, ReturnsTheVendorOfAnUnlistedDevice) {
    if (!HasDatabase()) {
        GTEST_SKIP() << "this system has no hardware database";
    }
    const THardwareDatabase names;
    EXPECT_EQ(names.FindPci({intel, unknownDevice}).vendor, "Intel Corporation");
    EXPECT_EQ(names.FindPci({intel, unknownDevice}).device, std::nullopt);
}

TEST(HardwareDatabase, RepeatsItsAnswer) {
    const THardwareDatabase names;
    for (const std::uint16_t device : {std::uint16_t{0x100E}, unknownDevice}) {
        const TDeviceName once = names.FindPci({intel, device});
        EXPECT_EQ(names.FindPci({intel, device}).vendor, once.vendor);
        EXPECT_EQ(names.FindPci({intel, device}).device, once.device);
    }
}

}  // namespace
}  // namespace NVORHOST
