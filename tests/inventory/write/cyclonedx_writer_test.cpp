#include "inventory/write/cyclonedx_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace NINVENTORY {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TProperty Text(const std::string& name, const std::string& value) {
    return {name, "string", EShape::scalar, {value}};
}

std::string WriteBill(std::vector<TResource> resources, const std::string& timestamp = {}) {
    std::ostringstream out;
    const auto writer = MakeCycloneDxWriter(out);
    writer->BeginSource("s");
    writer->BeginDocument({EDocument::hardware, "u", timestamp});
    for (TResource& resource : resources) {
        writer->AddResource(std::move(resource));
    }
    writer->Finish();
    return out.str();
}

std::string SerialNumberOf(const std::string& bill) {
    return bill.substr(bill.find("urn:uuid:"), 45);
}

TEST(CycloneDxWriter, WritesAMachineWithItsParts) {
    const std::string bill =
        WriteBill({{"S",
                    "Server",
                    {},
                    {},
                    {Text("Manufacturer", "Example"), Text("Model", "X3G"), Text("SerialNumber", "1")}},
                   {"M",
                    "PhysicalMemory",
                    {},
                    {},
                    {Text("Tag", "DIMM_A1"),
                     Text("Manufacturer", "Sample"),
                     Text("PartNumber", "P-1"),
                     Text("SerialNumber", "2"),
                     {"Capacity", "unsignedLong", EShape::scalar, {"17179869184"}},
                     Text("Description", "Module")}},
                   {"B", "BIOSElement", {}, {}, {Text("Name", "BIOS"), Text("Version", "2.1")}}},
                  "2024-03-01T12:00:00+01:00");
    EXPECT_THAT(bill, HasSubstr(R"("version":1,
"metadata":{"timestamp":"2024-03-01T12:00:00+01:00",)"
                                R"("tools":{"components":[{"type":"application","name":"noxinfo"}]},)"
                                R"("component":{"type":"device","bom-ref":"S","supplier":{"name":"Example"},)"
                                R"("name":"X3G","properties":[)"
                                R"({"name":"cdx:device:deviceType","value":"machine"},)"
                                R"({"name":"cdx:device:serialNumber","value":"1"}]}},
"components":[
{"type":"device","bom-ref":"M","supplier":{"name":"Sample"},"name":"P-1","description":"Module","properties":[)"
                                R"({"name":"cdx:device:deviceType","value":"memory module"},)"
                                R"({"name":"cdx:device:location","value":"DIMM_A1"},)"
                                R"({"name":"cdx:device:serialNumber","value":"2"},)"
                                R"({"name":"noxinfo:Capacity","value":"16 GiB"}]},
{"type":"firmware","bom-ref":"B","name":"BIOS","version":"2.1","properties":[]}
]}
)"));
}

TEST(CycloneDxWriter, FindsTheSerialNumberOfADiskInItsEntries) {
    EXPECT_THAT(
        WriteBill({{"D",
                    "DiskDrive",
                    {},
                    {},
                    {{"OtherIdentifyingInfo", "string", EShape::array, {"2", "S7M0"}},
                     {"IdentifyingDescriptions", "string", EShape::array, {"SAS bay", "Serial number"}}}}}),
        HasSubstr(R"({"name":"cdx:device:serialNumber","value":"S7M0"})"));
}

TEST(CycloneDxWriter, DerivesTheSerialNumberFromTheContent) {
    const std::vector<TResource> one = {{"M", "PhysicalMemory", {}, {}, {Text("SerialNumber", "1")}}};
    const std::vector<TResource> other = {{"M", "PhysicalMemory", {}, {}, {Text("SerialNumber", "2")}}};
    EXPECT_EQ(WriteBill(one), WriteBill(one));
    EXPECT_NE(SerialNumberOf(WriteBill(one)), SerialNumberOf(WriteBill(other)));
    // Version 5, variant of RFC 4122.
    EXPECT_THAT(
        SerialNumberOf(WriteBill(one)),
        ::testing::MatchesRegex("urn:uuid:[0-9a-f-]{13}-5[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}"));
}

TEST(CycloneDxWriter, MakesRepeatedIdentifiersUnique) {
    const std::string bill = WriteBill(
        {{"A", "DiskDrive", {}, {}, {}}, {"A", "DiskDrive", {}, {}, {}}, {"", "DiskDrive", {}, {}, {}}});
    EXPECT_THAT(bill, HasSubstr("\"bom-ref\":\"A\""));
    EXPECT_THAT(bill, HasSubstr("\"bom-ref\":\"A-2\""));
    EXPECT_THAT(bill, HasSubstr("\"bom-ref\":\"DiskDrive\""));
}

TEST(CycloneDxWriter, NamesAPartByItsKindIfItHasNoName) {
    EXPECT_THAT(WriteBill({{"A", "DiskDrive", {}, {}, {}}}), HasSubstr("\"name\":\"disk\",\"properties\""));
}

TEST(CycloneDxWriter, LeavesOutPartitions) {
    EXPECT_THAT(WriteBill({{"P", "DiskPartition", {}, {}, {Text("Name", "sda1")}}}), Not(HasSubstr("sda1")));
}

TEST(CycloneDxWriter, TakesTheMachineFromSystemInformationIfThereIsNothingElse) {
    const TResource system{"N", "NOXSystemInfo", {}, {}, {Text("Model", "FromSystem")}};
    const TResource server{"S", "Server", {}, {}, {Text("Model", "FromServer")}};
    EXPECT_THAT(WriteBill({system}), HasSubstr("FromSystem"));
    EXPECT_THAT(WriteBill({system, server}), Not(HasSubstr("FromSystem")));
    EXPECT_THAT(WriteBill({server, system}), HasSubstr("FromServer"));
}

TEST(CycloneDxWriter, LeavesOutATimestampOfAnotherForm) {
    EXPECT_THAT(WriteBill({}, "yesterday"), Not(HasSubstr("timestamp")));
    EXPECT_THAT(WriteBill({}, "2024-03-01"), Not(HasSubstr("timestamp")));
}

}  // namespace
}  // namespace NINVENTORY
