#include "inventory/write/shown_columns.h"

#include "inventory/model/meaning.h"
#include "inventory/model/resource_type.h"

#include <gtest/gtest.h>

#include <set>

namespace NINVENTORY {
namespace {

TProperty MakeText(std::string name, std::vector<std::string> values) {
    const EShape shape = values.size() == 1 ? EShape::scalar : EShape::array;
    return {std::move(name), "string", shape, std::move(values)};
}

std::string Shown(const TResource& resource, std::string_view title) {
    for (const TShownColumn& column : GetShownColumns(resource.type).columns) {
        if (column.title == title) {
            return ShowColumn(resource, column);
        }
    }
    return "no such column";
}

TEST(ShownColumns, AreKnownForEveryType) {
    for (const TResourceType& row : GetResourceTypes()) {
        EXPECT_EQ(GetShownColumns(row.type).type, row.type);
    }
}

TEST(ShownColumns, HaveDifferentTitles) {
    for (const TResourceType& row : GetResourceTypes()) {
        std::set<std::string_view> titles;
        for (const TShownColumn& column : GetShownColumns(row.type).columns) {
            EXPECT_TRUE(titles.insert(column.title).second) << row.type << " " << column.title;
        }
    }
}

// Names with a blank, or of the list below, are those of entries of OtherIdentifyingInfo.
TEST(ShownColumns, NamePropertiesWithAMeaning) {
    const std::set<std::string_view> entries{"Driver", "Slot", "Bond", "Location", ""};
    for (const TResourceType& row : GetResourceTypes()) {
        for (const TShownColumn& column : GetShownColumns(row.type).columns) {
            const bool isEntry =
                column.property.find(' ') != std::string_view::npos || entries.contains(column.property);
            EXPECT_TRUE(isEntry || FindMeaning(row.type, column.property) != nullptr)
                << row.type << " " << column.property;
        }
    }
}

TEST(ShowColumn, FindsEntriesOfOtherIdentifyingInfo) {
    const TResource disk{
        {},
        "DiskDrive",
        {},
        {},
        {MakeText("OtherIdentifyingInfo", {"S7M0", "0005", "Slot 02"}),
         MakeText("IdentifyingDescriptions", {"Serial number", "Firmware revision", "Enclosure slot"})}};
    EXPECT_EQ(Shown(disk, "serial number"), "S7M0");
    EXPECT_EQ(Shown(disk, "firmware"), "0005");
    EXPECT_EQ(Shown(disk, "place"), "enclosure slot Slot 02");
    EXPECT_EQ(Shown(disk, "identity"), "");
}

TEST(ShowColumn, FallsBackToTheOtherNames) {
    const TResource port{
        {},
        "EthernetPort",
        {},
        {},
        {MakeText("OtherIdentifyingInfo", {"br0"}), MakeText("IdentifyingDescriptions", {"Bridge"})}};
    EXPECT_EQ(Shown(port, "part of"), "br0");
}

TEST(ShowColumn, MultipliesBlocks) {
    const auto volumeOf = [](const char* type, const char* blocks, const char* blockSize) {
        return TResource{
            {}, type, {}, {}, {MakeText("NumberOfBlocks", {blocks}), MakeText("BlockSize", {blockSize})}};
    };
    EXPECT_EQ(Shown(volumeOf("LogicalVolume", "4000000", "512"), "size"), "2.05 GB");
    EXPECT_EQ(Shown(volumeOf("CacheMemory", "1310720", "1"), "size"), "1.25 MiB");
    EXPECT_EQ(Shown(volumeOf("LogicalVolume", "0", "512"), "size"), "0 B");
    EXPECT_EQ(Shown(volumeOf("LogicalVolume", "18446744073709551615", "512"), "size"), "");
    EXPECT_EQ(Shown(volumeOf("LogicalVolume", "many", "512"), "size"), "");
}

TEST(IsEmptyPlace, AcceptsMoreWordsAfterAComma) {
    const auto slotOf = [](const char* description) {
        return TResource{{}, "PhysicalConnector", {}, {}, {MakeText("Description", {description})}};
    };
    const TShownColumns& columns = GetShownColumns("PhysicalConnector");
    EXPECT_TRUE(IsEmptyPlace(columns, slotOf("Empty memory slot")));
    EXPECT_TRUE(IsEmptyPlace(columns, slotOf("Empty memory slot, DIMM")));
    EXPECT_FALSE(IsEmptyPlace(columns, slotOf("Memory slot, DIMM")));
}

TEST(IsShownInTables, RequiresMoreThanTheAddressOfAPciPort) {
    const TShownColumns& columns = GetShownColumns("PCIPort");
    TResource port{{}, "PCIPort", {}, {}, {MakeText("DeviceID", {"0000:00:1f.2"})}};
    EXPECT_FALSE(IsShownInTables(columns, port));
    port.properties.push_back(MakeText("PowerState", {"D0"}));
    EXPECT_TRUE(IsShownInTables(columns, port));
    EXPECT_FALSE(IsShownInTables(GetShownColumns("BasedOn"), port));
}

}  // namespace
}  // namespace NINVENTORY
