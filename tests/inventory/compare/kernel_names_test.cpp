#include "inventory/compare/kernel_names.h"

#include <gtest/gtest.h>

namespace NINVENTORY {
namespace {

TEST(HideKernelNames, ReplacesTheCounterAndKeepsThePartition) {
    EXPECT_EQ(HideKernelNames("sda"), "sd?");
    EXPECT_EQ(HideKernelNames("sdaa12 (EFI System)"), "sd?12 (EFI System)");
    EXPECT_EQ(HideKernelNames("nvme0n1p2"), "nvme?n1p2");
    EXPECT_EQ(HideKernelNames("mmcblk1p3"), "mmcblk?p3");
    EXPECT_EQ(HideKernelNames("Partition 1 of dm-6, on xvdb1"), "Partition 1 of dm-?, on xvd?1");
}

TEST(HideKernelNames, KeepsOtherWords) {
    for (const char* text : {"", "sd", "sdA", "SAMPLE HD 80", "usda1", "sda1x", "nvme", "md0", "-"}) {
        EXPECT_EQ(HideKernelNames(text), text);
    }
}

TEST(HasKernelNames, IsTrueForTextsOfBlockDevicesOnly) {
    EXPECT_TRUE(HasKernelNames("DiskPartition", "Name"));
    EXPECT_FALSE(HasKernelNames("DiskPartition", "DeviceID"));
    EXPECT_FALSE(HasKernelNames("Card", "Name"));
}

}  // namespace
}  // namespace NINVENTORY
