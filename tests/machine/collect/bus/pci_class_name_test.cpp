#include "machine/collect/bus/pci_class_name.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(GetPciClassName, FallsBackFromSubclassToBaseClassToAnyDevice) {
    EXPECT_EQ(GetPciClassName(0x02, 0x00), "Ethernet controller");
    EXPECT_EQ(GetPciClassName(0x02, 0x7F), "Network controller");
    EXPECT_EQ(GetPciClassName(0x77, 0x00), "PCI device");
}

}  // namespace
}  // namespace NVORHOST
