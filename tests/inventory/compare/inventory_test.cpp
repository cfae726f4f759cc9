#include "inventory/compare/inventory.h"

#include "tests/inventory/compare/inventories.h"

#include <gtest/gtest.h>

namespace NINVENTORY {
namespace {

TEST(Inventory, OfAHardwareDocumentCoversTheTypesOfItsLists) {
    const TInventory document = MakeDocument({});
    EXPECT_TRUE(document.Covers("Server"));
    EXPECT_TRUE(document.Covers("DiskDrive"));
    EXPECT_FALSE(document.Covers("Chassis"));
    EXPECT_FALSE(document.Covers("NOXSystemInfo"));
}

TEST(Inventory, OfSystemInformationCoversItsOnlyType) {
    const TInventory document{"s", {{EDocument::systemInformation, "u", "t"}}, {}, {}};
    EXPECT_TRUE(document.Covers("NOXSystemInfo"));
    EXPECT_FALSE(document.Covers("Server"));
}

TEST(Inventory, OfANamespaceCoversItsClassesEvenIfTheyAreEmpty) {
    const TInventory inventory{"s", {{EDocument::collection, "", ""}}, {"Battery"}, {}};
    EXPECT_TRUE(inventory.Covers("Battery"));
    EXPECT_FALSE(inventory.Covers("Chassis"));
}

TEST(Inventory, HasTheTimeOfItsFirstDocumentWithOne) {
    const TInventory inventory{
        "s", {{EDocument::hardware, "u", ""}, {EDocument::systemInformation, "u", "now"}}, {}, {}};
    EXPECT_EQ(inventory.GetTimestamp(), "now");
    EXPECT_EQ(MakeDocument({}).GetTimestamp(), "");
}

}  // namespace
}  // namespace NINVENTORY
