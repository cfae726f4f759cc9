#include "inventory/model/meaning.h"

#include "inventory/model/resource_type.h"
#include "writer/catalogue/resource_catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

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

struct TDocumentedProperty {
    std::string className, name, unit;
};

// Returns the text between two delimiters, the first of which is the `count`-th of its kind.
std::string CellOf(const std::string& line, int count) {
    std::istringstream cells(line);
    std::string cell;
    for (int i = 0; i <= count; ++i) {
        std::getline(cells, cell, '|');
    }
    const auto first = cell.find_first_not_of(" `");
    return first == std::string::npos ? "" : cell.substr(first, cell.find_last_not_of(" `") - first + 1);
}

// Reads the rows "| `Name` | type | unit | source |" below the headings "### `Class`". Another test holds the
// document against the collectors.
std::vector<TDocumentedProperty> ReadDocumentedProperties() {
    std::vector<TDocumentedProperty> properties;
    std::ifstream document(NOXINFO_DOCS "/collectors.md");
    std::string className;
    for (std::string line; std::getline(document, line);) {
        if (line.starts_with("## ")) {
            className.clear();  // a section without a class may have a table of its own
        } else if (line.starts_with("### `")) {
            className = line.substr(5, line.find('`', 5) - 5);
        } else if (!className.empty() && line.starts_with("| `")) {
            properties.push_back({className, CellOf(line, 1), CellOf(line, 3)});
        }
    }
    return properties;
}

// Returns the name that a property of a class has as a resource.
std::string FindOutputName(const TDocumentedProperty& property) {
    const TResourceClass* const listed = FindResourceClass(property.className);
    if (listed != nullptr) {
        for (const TPropertyRow& row : listed->properties) {
            if (row.sourceName == property.name) {
                return std::string(row.outputName);
            }
        }
    }
    return property.name;
}

TEST(Meaning, IsKnownForEveryPropertyOfTheCollectors) {
    const auto properties = ReadDocumentedProperties();
    EXPECT_GT(properties.size(), 400U);
    for (const TDocumentedProperty& property : properties) {
        EXPECT_NE(FindMeaning(GetTypeOfClass(property.className), FindOutputName(property)), nullptr)
            << property.className << "." << property.name;
    }
}

TEST(Meaning, HasTheUnitThatTheCollectorsDocument) {
    const std::multimap<std::string, EUnit> units{{"bytes", EUnit::bytes},
                                                  {"bytes", EUnit::memoryBytes},
                                                  {"bytes", EUnit::storageBytes},
                                                  {"bytes", EUnit::blocks},
                                                  {"blocks", EUnit::blocks},
                                                  {"KiB", EUnit::kibibytes},
                                                  {"MHz", EUnit::megahertz},
                                                  {"MT/s", EUnit::megatransfers},
                                                  {"min", EUnit::minutes},
                                                  {"bits", EUnit::bits},
                                                  {"mV", EUnit::millivolts},
                                                  {"%", EUnit::percent},
                                                  {"percent", EUnit::percent},
                                                  {"inches", EUnit::inches},
                                                  {"mW", EUnit::milliwatts},
                                                  {"mWh", EUnit::milliwattHours},
                                                  {"ms", EUnit::milliseconds},
                                                  {"s", EUnit::seconds},
                                                  {"1000 bytes", EUnit::storageKilobytes},
                                                  {"1/min", EUnit::revolutionsPerMinute},
                                                  {"doublewords", EUnit::doublewords},
                                                  {"clocks", EUnit::pciClocks},
                                                  {"250 ns", EUnit::quarterMicroseconds},
                                                  {"bit/s", EUnit::bitsPerSecond},
                                                  {"lanes", EUnit::lanes},
                                                  {"BCD", EUnit::binaryCodedVersion},
                                                  {"copies", EUnit::none},
                                                  {"disks", EUnit::none}};
    for (const TDocumentedProperty& property : ReadDocumentedProperties()) {
        const TMeaning* const meaning =
            FindMeaning(GetTypeOfClass(property.className), FindOutputName(property));
        if (property.unit.empty() || meaning == nullptr) {
            continue;
        }
        const auto [first, last] = units.equal_range(property.unit);
        EXPECT_TRUE(std::any_of(first, last, [&](const auto& row) { return row.second == meaning->unit; }))
            << property.className << "." << property.name << " " << property.unit;
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
}

TEST(Meaning, SeparatesWhatIdentifiesAMachine) {
    EXPECT_EQ(FindMeaning("PhysicalMemory", "SerialNumber")->identity, EIdentity::serialNumber);
    EXPECT_EQ(FindMeaning("PhysicalMemory", "PartNumber")->identity, EIdentity::none);
    EXPECT_EQ(FindMeaning("Server", "Name")->identity, EIdentity::none) << "the operating system's name";
    EXPECT_EQ(FindMeaning("ComputerSystem", "Name")->identity, EIdentity::hostName);
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
