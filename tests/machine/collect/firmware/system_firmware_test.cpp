#include "tests/machine/collect/collect_fixture.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr const char* bios = "CIM_BIOSElement";
constexpr const char* controller = "CIM_SoftwareElement";

std::string Table(const std::string& line) {
    return "/sys/firmware/dmi/tables/DMI smbios:\n| " + line + "\n";
}

TEST(SystemFirmware, HasEveryPropertyOfTheTable) {
    TCollected collected;
    Collect(Table("0: 01 02 00 f0 03 ff 00 00 00 00 00 00 00 00 03 0d 05 11 01 0c "
                  "\"Maker\" \"F.42\" \"03/15/2021\""),
            collected);
    ASSERT_EQ(collected.CountInstances(bios), 1U);
    EXPECT_EQ(collected.Get(bios, "ElementName"), "Maker F.42");
    EXPECT_EQ(collected.Get(bios, "Description"), "System firmware, release 5.17");
    EXPECT_EQ(collected.Get(bios, "Name"), "System firmware");
    EXPECT_EQ(collected.Get(bios, "Manufacturer"), "Maker");
    EXPECT_EQ(collected.Get(bios, "Version"), "F.42");
    EXPECT_EQ(collected.Get(bios, "ReleaseDate"), "20210315******.******+000");
    EXPECT_EQ(collected.Get(bios, "PrimaryBIOS"), "true");
    ASSERT_EQ(collected.CountInstances(controller), 1U);
    EXPECT_EQ(collected.Get(controller, "ElementName"), "Embedded controller firmware 1.12");
    EXPECT_EQ(collected.Get(controller, "Description"), "Embedded controller firmware");
    EXPECT_EQ(collected.Get(controller, "Name"), "Embedded controller firmware");
    EXPECT_EQ(collected.Get(controller, "Version"), "1.12");
}

TEST(SystemFirmware, LeavesOutPlaceholdersAndMalformedDates) {
    TCollected collected;
    Collect(Table("0: 01 02 00 f0 03 ff 00 00 00 00 00 00 00 00 "
                  "\"Default string\" \"1.0\" \"2021-03-15\""),
            collected);
    ASSERT_EQ(collected.CountInstances(bios), 1U);
    EXPECT_EQ(collected.Get(bios, "ElementName"), "1.0");
    EXPECT_EQ(collected.Get(bios, "Description"), "System firmware");
    EXPECT_EQ(collected.Get(bios, "Manufacturer"), "absent");
    EXPECT_EQ(collected.Get(bios, "ReleaseDate"), "absent");
    EXPECT_EQ(collected.CountInstances(controller), 0U);
}

TEST(SystemFirmware, FallsBackToTheKernelsExcerpt) {
    TCollected collected;
    Collect(
        "/sys/firmware/dmi/tables/DMI !denied\n"
        "/sys/class/dmi/id/bios_vendor = Maker\n"
        "/sys/class/dmi/id/bios_version = F.42\n"
        "/sys/class/dmi/id/bios_date = 03/15/2021\n"
        "/sys/class/dmi/id/bios_release = 5.17\n"
        "/sys/class/dmi/id/ec_firmware_release = 1.12\n",
        collected);
    ASSERT_EQ(collected.CountInstances(bios), 1U);
    EXPECT_EQ(collected.Get(bios, "Name"), "System firmware");
    EXPECT_EQ(collected.Get(bios, "Manufacturer"), "Maker");
    EXPECT_EQ(collected.Get(bios, "Version"), "F.42");
    EXPECT_EQ(collected.Get(bios, "ReleaseDate"), "20210315******.******+000");
    EXPECT_EQ(collected.Get(bios, "Description"), "System firmware, release 5.17");
    EXPECT_EQ(collected.Get(controller, "Version"), "1.12");
}

TEST(SystemFirmware, HasNoInstanceWithoutASource) {
    TCollected collected;
    Collect("/sys/class/dmi/id/sys_vendor = Maker\n", collected);
    EXPECT_EQ(collected.CountInstances(bios), 0U);
    EXPECT_EQ(collected.CountInstances(controller), 0U);
}

}  // namespace
}  // namespace NVORHOST
