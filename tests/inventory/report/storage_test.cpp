#include "inventory/report/storage_section.h"
#include "made_inventory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace NINVENTORY {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

std::string Draw(TMadeInventory& made) {
    std::ostringstream out;
    THtmlWriter html(out);
    WriteStorage(html, made.Get());
    return out.str();
}

const std::string disk = "KELSG_DiskDrive.DeviceID=\"d\"";

TMadeInventory& AddPartition(TMadeInventory& made, const std::string& id, const std::string& bytes,
                             const std::string& kind = "1") {
    return made
        .Add("DiskPartition",
             {{"Name", id}, {"DeviceID", id}, {"PartitionSize", bytes}, {"PartitionType", kind}})
        .Relate("BasedOn", disk, "CIM_DiskPartition.DeviceID=\"" + id + "\"");
}

TEST(GetSize, ReadsTheSizeOfEachKindOfExtent) {
    TMadeInventory made;
    made.Add("DiskDrive", {{"MaxMediaSize", "480"}})
        .Add("DiskPartition", {{"PartitionSize", "512"}, {"NumberOfBlocks", "1"}})
        .Add("LogicalVolume", {{"NumberOfBlocks", "10"}, {"BlockSize", "512"}})
        .Add("LogicalVolume", {{"NumberOfBlocks", "10"}})
        .Add("LogicalVolume", {{"NumberOfBlocks", "18446744073709551615"}, {"BlockSize", "2"}});
    const auto& resources = made.Get().GetResources();
    EXPECT_EQ(GetSize(resources[0]), 480'000U);
    EXPECT_EQ(GetSize(resources[1]), 512U);
    EXPECT_EQ(GetSize(resources[2]), 5120U);
    EXPECT_FALSE(GetSize(resources[3]));
    EXPECT_FALSE(GetSize(resources[4]));
}

TEST(StorageSection, DrawsPartitionsToScale) {
    TMadeInventory made;
    made.Add("DiskDrive", {{"Name", "disk"}, {"DeviceID", "d"}, {"MaxMediaSize", "1000"}});
    AddPartition(made, "p1", "250000");
    AddPartition(made, "p2", "500000");
    EXPECT_THAT(Draw(made),
                AllOf(HasSubstr("<rect class=\"part\" x=\"0\" y=\"1\" width=\"250\" height=\"22\"/>"),
                      HasSubstr("<rect class=\"part\" x=\"250\" y=\"1\" width=\"500\" height=\"22\"/>"),
                      HasSubstr("<title>2 partitions</title>")));
}

TEST(StorageSection, DrawsLogicalPartitionsWithinTheExtendedOne) {
    TMadeInventory made;
    made.Add("DiskDrive", {{"Name", "disk"}, {"DeviceID", "d"}, {"MaxMediaSize", "1000"}});
    AddPartition(made, "p1", "100000");
    AddPartition(made, "p2", "900000", "2");
    AddPartition(made, "p5", "400000", "3");
    EXPECT_THAT(Draw(made),
                AllOf(HasSubstr("<rect class=\"hole\" x=\"100\" y=\"1\" width=\"900\" height=\"22\"/>"),
                      HasSubstr("<rect class=\"part\" x=\"100\" y=\"4\" width=\"400\" height=\"16\"/>")));
}

TEST(StorageSection, ListsPartitionsThatDoNotFitWithoutDrawingThem) {
    TMadeInventory made;
    made.Add("DiskDrive", {{"Name", "disk"}, {"DeviceID", "d"}, {"MaxMediaSize", "1000"}});
    AddPartition(made, "p1", "18446744073709551615");
    AddPartition(made, "p2", "2");
    EXPECT_THAT(Draw(made), AllOf(HasSubstr("<b><bdi>p1</bdi></b>"), Not(HasSubstr("class=\"part\" x"))));
}

TEST(StorageSection, NamesWhatAVolumeIsBasedOnAndWhatItHolds) {
    TMadeInventory made;
    made.Add("DiskDrive", {{"Name", "disk"}, {"DeviceID", "d"}, {"MaxMediaSize", "1000"}})
        .Add("LogicalVolume",
             {{"Name", "md0"}, {"DeviceID", "v"}, {"NumberOfBlocks", "100"}, {"BlockSize", "512"}})
        .Add("LocalFileSystem",
             {{"Name", "f"}, {"Root", "/srv"}, {"FileSystemType", "xfs"}, {"AvailableSpace", "30000"}})
        .Relate("BasedOn", disk, "KELSG_LogicalDisk.DeviceID=\"v\"")
        .Relate("ResidesOnExtent", "KELSG_LogicalDisk.DeviceID=\"v\"", "CIM_LocalFileSystem.Name=\"f\"");
    EXPECT_THAT(
        Draw(made),
        AllOf(HasSubstr(
                  "<b><bdi>disk</bdi></b> <bdi>1 MB</bdi>, holds <a href=\"#extent-2\"><bdi>md0</bdi></a>, "
                  "<code><bdi>d</bdi></code></p>"),
              HasSubstr(
                  "<li id=\"extent-2\"><p><b><bdi>md0</bdi></b> <bdi>51.2 kB</bdi>, based on <a "
                  "href=\"#extent-1\"><bdi>d</bdi></a>, mounted on <bdi>/srv</bdi> as <bdi>xfs</bdi>, 30 kB "
                  "free</p>")));
}

TEST(StorageSection, ListsPartitionsWhoseDiskIsUnknown) {
    TMadeInventory made;
    made.Add("DiskPartition", {{"Name", "p1"}});
    EXPECT_THAT(Draw(made), AllOf(HasSubstr("<h3>Partitions whose disk the source does not record</h3>"),
                                  HasSubstr("<li><b><bdi>p1</bdi></b> <bdi>size unknown</bdi></li>")));
}

}  // namespace
}  // namespace NINVENTORY
