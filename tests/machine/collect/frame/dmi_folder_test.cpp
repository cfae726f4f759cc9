// The folder of the kernel's firmware texts, also in trees that were captured without the class.
#include "machine/collect/frame/dmi_folder.h"

#include "tests/machine/collect/collect_fixture.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(FindDmiFolder, PrefersTheClassToTheDevice) {
    const std::string device = "/sys/devices/virtual/dmi/id/product_name = P\n";
    EXPECT_EQ(FindDmiFolder(ParseMachineTree(device + "/sys/class/dmi/id/product_name = P\n").files),
              "/sys/class/dmi/id");
    EXPECT_EQ(FindDmiFolder(ParseMachineTree(device).files), "/sys/devices/virtual/dmi/id");
    EXPECT_EQ(FindDmiFolder(ParseMachineTree("").files), std::nullopt);
}

TEST(FindDmiFolder, GivesATreeWithoutTheClassItsSystemAndItsBoard) {
    const std::string folder = "/sys/devices/virtual/dmi/id/";
    TCollected collected;
    Collect(folder + "sys_vendor = Maker\n" + folder + "product_name = Product\n" + folder +
                "product_serial = SN-1\n" + folder + "product_uuid = 4c4c4544-0042-3510-8054-b9c04f503231\n" +
                folder + "chassis_type = 7\n" + folder + "board_vendor = Board Maker\n" + folder +
                "board_name = Board\n",
            collected);
    EXPECT_EQ(collected.Get("KELSG_ComputerSystem", "Manufacturer"), "Maker");
    EXPECT_EQ(collected.Get("KELSG_ComputerSystem", "ProductName"), "Product");
    EXPECT_EQ(collected.Get("KELSG_ComputerSystem", "SerialNumber"), "SN-1");
    EXPECT_EQ(collected.Get("KELSG_ComputerSystem", "Name"), "4C4C4544-0042-3510-8054-B9C04F503231");
    EXPECT_EQ(collected.Get("KELSG_ComputerSystem", "Description"), "Computer system, Tower");
    EXPECT_EQ(collected.Get("KELSG_Card", "ElementName"), "Board Maker Board");
}

}  // namespace
}  // namespace NVORHOST
