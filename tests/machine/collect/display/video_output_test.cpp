#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* output = "CIM_VideoHead";

TEST(VideoOutputs, HaveTheAdapterInTheirKey) {
    TCollected collected;
    Collect(
        "/sys/class/drm/card1 -> ../../devices/pci0000:00/0000:03:00.0/drm/card1\n"
        "/sys/class/drm/card1-HDMI-A-1 -> ../../devices/pci0000:00/0000:03:00.0/drm/card1/card1-HDMI-A-1\n"
        "/sys/devices/pci0000:00/0000:03:00.0/drm/card1/card1-HDMI-A-1/status = connected\n"
        "/sys/devices/pci0000:00/0000:03:00.0/drm/card1/card1-HDMI-A-1/enabled = enabled\n"
        "/sys/class/drm/renderD128/dev = 226:128\n",
        collected);
    ASSERT_EQ(collected.CountInstances(output), 1U);
    EXPECT_EQ(collected.Get(output, "ElementName"), "HDMI-A-1");
    EXPECT_EQ(collected.Get(output, "DeviceID"), "0000:03:00.0 HDMI-A-1");
    EXPECT_EQ(collected.Get(output, "Description"), "Display output, connected");
    EXPECT_EQ(collected.Get(output, "EnabledState"), "2");
}

TEST(VideoOutputs, AreListedWithoutAMonitorToo) {
    TCollected collected;
    Collect(
        "/sys/class/drm/card0-DP-1/status = disconnected\n"
        "/sys/class/drm/card0-DP-1/enabled = disabled\n"
        "/sys/class/drm/card0-VGA-1/status = unknown\n",
        collected);
    EXPECT_THAT(collected.GetAll(output, "DeviceID"), ElementsAre("DP-1", "VGA-1"));
    EXPECT_THAT(collected.GetAll(output, "Description"),
                ElementsAre("Display output, disconnected", "Display output"));
    EXPECT_THAT(collected.GetAll(output, "EnabledState"), ElementsAre("3", "absent"));
}

TEST(VideoOutputs, HaveTheNameOfTheCardInTheKeyOnlyIfTheirKeysAreEqual) {
    TCollected collected;
    Collect("/sys/class/drm/card0-DP-1/status = connected\n/sys/class/drm/card1-DP-1/status = connected\n",
            collected);
    EXPECT_THAT(collected.GetAll(output, "DeviceID"), ElementsAre("DP-1@card0-DP-1", "DP-1@card1-DP-1"));
}

TEST(VideoOutputs, HaveNoAddressOfAdaptersOnOtherBuses) {
    TCollected collected;
    Collect(
        "/sys/class/drm/card0-Virtual-1 -> "
        "../../devices/platform/display-subsystem/drm/card0/card0-Virtual-1\n"
        "/sys/devices/platform/display-subsystem/drm/card0/card0-Virtual-1/status = connected\n",
        collected);
    EXPECT_THAT(collected.GetAll(output, "DeviceID"), ElementsAre("Virtual-1"));
}

}  // namespace
}  // namespace NVORHOST
