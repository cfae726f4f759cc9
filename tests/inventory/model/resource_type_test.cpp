#include "inventory/model/resource_type.h"

#include "writer/catalogue/resource_catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace NINVENTORY {
namespace {

TEST(ResourceType, IsKnownForEveryClassOfTheCatalogue) {
    for (const TResourceClass& listed : GetResourceCatalogue()) {
        EXPECT_NE(FindClassType(listed.className), nullptr) << listed.className;
    }
}

TEST(ResourceType, HasTheDocumentsNameOfTheKeyProperty) {
    for (const TResourceType& row : GetResourceTypes()) {
        const TResourceClass* const listed = FindResourceClass(row.className);
        if (listed == nullptr || row.type == "Process") {  // no document lists processes
            continue;
        }
        const auto names = [&](const TPropertyRow& property) {
            return property.outputName == row.keyProperty && property.sourceName == listed->keyProperty;
        };
        EXPECT_TRUE(std::ranges::any_of(listed->properties, names) ||
                    std::ranges::any_of(listed->head, names) || row.type == "srDiskGroup")
            << row.className;
    }
}

TEST(ResourceType, OfAClassWithoutARowIsItsNameWithoutPrefix) {
    EXPECT_EQ(GetTypeOfClass("KELSG_SPDData"), "PhysicalMemory");
    EXPECT_EQ(GetTypeOfClass("CIM_Fan"), "Fan");
    EXPECT_EQ(GetTypeOfClass("Fan"), "Fan");
    EXPECT_EQ(FindResourceType("Fan"), nullptr);
}

TEST(ResourceType, HasTheKeyNameOfTheNamespace) {
    EXPECT_EQ(GetKeyName("KELSG_ComputerSystem"), "Name");
    EXPECT_EQ(FindClassType("KELSG_ComputerSystem")->keyProperty, "SystemBoardUUID");
    EXPECT_EQ(GetKeyName("CIM_Chassis"), "Tag");
    EXPECT_EQ(GetKeyName("CIM_Fan"), "");
}

}  // namespace
}  // namespace NINVENTORY
