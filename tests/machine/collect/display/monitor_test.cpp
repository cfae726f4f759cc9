#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* monitor = "CIM_DesktopMonitor";

// An EDID of product 1234h with a serial number in the lowest byte at 0Ch, and further lines of registers.
// `checksum` makes the sum of all bytes a multiple of 256.
std::string Edid(const std::string& connector, const std::string& serial, const std::string& checksum,
                 const std::string& lines = "") {
    return "/sys/class/drm/" + connector +
           "/edid registers 128:\n| 00: 00 ff ff ff ff ff ff 00 16 ce 34 12 " + serial +
           " 00 00 00\n| 10: 1d 1f 01 04\n| 15: 3c 22\n" + lines + "| 7f: " + checksum + "\n";
}

// The descriptors 48h, "Example 24", and 5Ah, the serial number "X7-42".
constexpr const char* texts =
    "| 48: 00 00 00 fc 00 45 78 61 6d 70 6c 65 20 32 34 0a 20 20\n"
    "| 5a: 00 00 00 ff 00 58 37 2d 34 32 0a 20 20 20 20 20 20 20\n";

TEST(Monitors, HaveEveryPropertyOfTheEdid) {
    TCollected collected;
    Collect(Edid("card0-HDMI-A-1", "2a", "70", texts), collected);
    ASSERT_EQ(collected.CountInstances(monitor), 1U);
    EXPECT_EQ(collected.Get(monitor, "ElementName"), "Example 24");
    EXPECT_EQ(collected.Get(monitor, "Description"), "Monitor, 600 x 340 mm, made in week 29 of 2021");
    EXPECT_EQ(collected.Get(monitor, "DeviceID"), "EVN-1234-X7-42");
    EXPECT_EQ(collected.Get(monitor, "OtherIdentifyingInfo"), "{EVN, 1234, X7-42}");
    EXPECT_EQ(collected.Get(monitor, "IdentifyingDescriptions"),
              "{Manufacturer, Product code, Serial number}");
}

TEST(Monitors, FallBackToTheNumberAndToMakerAndProduct) {
    TCollected collected;
    Collect(Edid("card0-DP-1", "2a", "13") + Edid("card0-DP-2", "00", "3d"), collected);
    EXPECT_THAT(collected.GetAll(monitor, "DeviceID"), ElementsAre("EVN-1234-42", "EVN-1234"));
    EXPECT_THAT(collected.GetAll(monitor, "ElementName"), ElementsAre("EVN 1234", "EVN 1234"));
    EXPECT_THAT(collected.GetAll(monitor, "OtherIdentifyingInfo"),
                ElementsAre("{EVN, 1234, 42}", "{EVN, 1234}"));
}

TEST(Monitors, HaveTheirConnectorsInTheKeyIfTheyAreAlike) {
    TCollected collected;
    Collect(Edid("card0-DP-1", "00", "3d") + Edid("card1-HDMI-A-2", "00", "3d"), collected);
    EXPECT_THAT(collected.GetAll(monitor, "DeviceID"), ElementsAre("EVN-1234@DP-1", "EVN-1234@HDMI-A-2"));
}

TEST(Monitors, HaveTheYearOfTheModelIfTheEdidHasNoDate) {
    TCollected collected;
    Collect(Edid("card0-DP-1", "00", "5b", "| 10: ff 1f\n"), collected);
    EXPECT_EQ(collected.Get(monitor, "Description"), "Monitor, 600 x 340 mm, model of 2021");
}

TEST(Monitors, AreAbsentOnConnectorsWithoutAValidEdid) {
    TCollected collected;
    Collect(
        "/sys/class/drm/card0-DP-1/edid bytes:\n/sys/class/drm/card0-DP-2/status = disconnected\n"
        "/sys/class/drm/version = drm\n" +
            Edid("card0-DP-3", "00", "00") + Edid("renderD128", "00", "3d"),
        collected);
    EXPECT_EQ(collected.CountInstances(monitor), 0U);
}

}  // namespace
}  // namespace NVORHOST
