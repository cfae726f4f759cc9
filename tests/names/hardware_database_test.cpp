// Names from the system's hardware database, which need not be there.
#include "vorhost/names/hardware_database.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace NVORHOST {
namespace {

// Numbers that no list of vendors has, so that the answer is the same with a database and without.
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

TEST(HardwareDatabase, HasNoNameForNumbersThatNobodyHas) {
    const THardwareDatabase names;
    EXPECT_EQ(names.FindPciVendor(unknownVendor), std::nullopt);
    EXPECT_EQ(names.FindPciDevice(unknownVendor, unknownDevice), std::nullopt);
    EXPECT_EQ(names.FindUsbVendor(unknownVendor), std::nullopt);
    EXPECT_EQ(names.FindUsbDevice(unknownVendor, unknownDevice), std::nullopt);
}

TEST(HardwareDatabase, IsOpenedAndClosedWithoutAQuestion) {
    const THardwareDatabase names;
    const THardwareDatabase others;
}

TEST(HardwareDatabase, OfNoSystemHasNoNames) {
    if (HasDatabase()) {
        GTEST_SKIP() << "this system has a hardware database";
    }
    const THardwareDatabase names;
    EXPECT_EQ(names.FindPciVendor(intel), std::nullopt);
    EXPECT_EQ(names.FindUsbVendor(linuxFoundation), std::nullopt);
}

TEST(HardwareDatabase, NamesVendorsThatEveryDatabaseHas) {
    if (!HasDatabase()) {
        GTEST_SKIP() << "this system has no hardware database";
    }
    const THardwareDatabase names;
    EXPECT_EQ(names.FindPciVendor(intel), "Intel Corporation");
    EXPECT_EQ(names.FindUsbVendor(linuxFoundation), "Linux Foundation");
    EXPECT_EQ(names.FindUsbDevice(linuxFoundation, 0x0002), "2.0 root hub");
}

TEST(HardwareDatabase, NamesADeviceWithoutItsVendor) {
    if (!HasDatabase()) {
        GTEST_SKIP() << "this system has no hardware database";
    }
    const THardwareDatabase names;
    const auto device = names.FindPciDevice(intel, 0x100E);
    ASSERT_TRUE(device.has_value());
    EXPECT_TRUE(device->starts_with("82540EM")) << *device;
    EXPECT_EQ(names.FindPciDevice(intel, unknownDevice), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
