#include "inventory/model/meaning.h"

#include "inventory/model/resource_type.h"
#include "writer/catalogue/resource_catalogue.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

namespace NINVENTORY {
namespace {

TEST(Meaning, IsKnownForEveryPropertyOfTheDocuments) {
    for (const TResourceClass& listed : GetResourceCatalogue()) {
        const std::string type = GetTypeOfClass(listed.className);
        for (const TPropertyRow& row : listed.head) {
            EXPECT_NE(FindMeaning(type, row.outputName), nullptr) << type << "." << row.outputName;
        }
        for (const TPropertyRow& row : listed.properties) {
            EXPECT_NE(FindMeaning(type, row.outputName), nullptr) << type << "." << row.outputName;
        }
    }
}

TEST(Meaning, HasOneRowForEachProperty) {
    std::set<std::pair<std::string_view, std::string_view>> seen;
    for (const TMeaning& row : GetMeanings()) {
        EXPECT_TRUE(seen.insert({row.type, row.property}).second) << row.type << "." << row.property;
    }
}

TEST(Meaning, HasOneWordForEachCode) {
    for (const TMeaning& row : GetMeanings()) {
        std::set<std::uint64_t> codes;
        for (const TCodeWord& word : row.words) {
            EXPECT_TRUE(codes.insert(word.code).second) << row.property << " " << word.code;
            EXPECT_FALSE(word.word.empty());
        }
    }
}

TEST(Meaning, PrefersTheRowOfTheType) {
    EXPECT_EQ(FindMeaning("Memory", "BlockSize")->unit, EUnit::memoryBytes);
    EXPECT_EQ(FindMeaning("LogicalVolume", "BlockSize")->unit, EUnit::storageBytes);
    EXPECT_EQ(FindMeaning("Card", "NoSuchProperty"), nullptr);
}

TEST(Meaning, SeparatesWhatChangesByItself) {
    EXPECT_TRUE(FindMeaning("OperatingSystem", "FreePhysicalMemory")->isVolatile);
    EXPECT_FALSE(FindMeaning("OperatingSystem", "TotalVisibleMemorySize")->isVolatile);
    EXPECT_TRUE(FindMeaning("PhysicalMemory", "SerialNumber")->identifies);
    EXPECT_FALSE(FindMeaning("PhysicalMemory", "PartNumber")->identifies);
}

// The description of the CIM schema lists value maps as "NAME: 0 Unknown, 1 Other, ...".
TEST(Meaning, HasTheWordsOfTheValueMaps) {
    std::ifstream description(NOXINFO_CIM_PROPERTIES);
    if (!description) {
        GTEST_SKIP() << "no description of the CIM schema at " NOXINFO_CIM_PROPERTIES;
    }
    const std::map<std::string, std::string> maps = {
        {"OperationalStatus values: ", "DiskDrive"},
        {"ExecutionState: ", "Process"},
        {"PartitionSubtype list: ", "DiskPartition"},
        {"ProtocolSupported: ", "PCIDevice"},
        {"BridgeType: ", "PCIBridge"},
        {"Dedicated: ", "Server"},
        {"ConnectorLayout: ", "Slot"},
    };
    std::size_t found = 0;
    for (std::string line; std::getline(description, line);) {
        for (const auto& [start, type] : maps) {
            if (!line.starts_with(start)) {
                continue;
            }
            ++found;
            std::istringstream items(line.substr(start.size()));
            const std::string property = start.substr(0, start.find_first_of(": "));
            for (std::string item; std::getline(items, item, ',');) {
                std::istringstream words(item);
                std::uint64_t code = 0;
                std::string word;
                if (words >> code >> word) {
                    const auto known = FindWord(FindMeaning(type, property)->words, code);
                    ASSERT_TRUE(known.has_value()) << property << " " << code << " " << word;
                }
            }
        }
    }
    EXPECT_EQ(found, maps.size());
}

}  // namespace
}  // namespace NINVENTORY
