#include "inventory/model/resource_type.h"

#include "writer/catalogue/resource_catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>

namespace NINVENTORY {
namespace {

TEST(ResourceType, IsKnownForEveryClassOfTheCatalogue) {
    for (const TResourceClass& listed : GetResourceCatalogue()) {
        EXPECT_NE(FindClassType(listed.className), nullptr) << listed.className;
    }
}

// The headings "### `Class`"; another test holds the document against the collectors.
TEST(ResourceType, IsKnownForEveryClassOfTheCollectors) {
    std::ifstream document(NOXINFO_DOCS "/collectors.md");
    std::size_t count = 0;
    for (std::string line; std::getline(document, line);) {
        if (line.starts_with("### `")) {
            const std::string className = line.substr(5, line.find('`', 5) - 5);
            EXPECT_NE(FindClassType(className), nullptr) << className;
            ++count;
        }
    }
    EXPECT_GT(count, 40U);
}

TEST(ResourceType, HasNamesForPeople) {
    for (const TResourceType& row : GetResourceTypes()) {
        EXPECT_FALSE(row.singular.empty() || row.plural.empty()) << row.className;
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
