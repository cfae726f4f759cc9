#include "inventory/write/openmetrics_writer.h"

#include "documents/document_error.h"
#include "inventory/model/meaning.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <vector>

namespace NINVENTORY {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TProperty Text(const std::string& name, const std::string& value) {
    return {name, "string", EShape::scalar, {value}};
}

std::string WriteMetrics(std::vector<TResource> resources) {
    std::ostringstream out;
    const auto writer = MakeOpenMetricsWriter(out);
    writer->BeginSource("s");
    writer->BeginDocument({EDocument::hardware, "u", "t"});
    for (TResource& resource : resources) {
        writer->AddResource(std::move(resource));
    }
    writer->Finish();
    return out.str();
}

TResource Module(const std::string& id, std::vector<TProperty> properties) {
    return {id, "PhysicalMemory", "PhysicalElement", {}, std::move(properties)};
}

TEST(OpenMetricsWriter, WritesOnlyTheEndWithoutSources) {
    EXPECT_EQ(WriteMetrics({}), "# EOF\n");
}

TEST(OpenMetricsWriter, WritesTheMetricsOfOneNameTogether) {
    EXPECT_EQ(WriteMetrics({Module("B", {Text("Name", "DIMM 2"), Text("Capacity", "2048")}),
                            Module("A", {Text("Name", "DIMM 1"),
                                         Text("Capacity", "1024"),
                                         {"MemoryType", "unsignedShort", EShape::scalar, {"26"}}})}),
              R"(# HELP noxinfo_memory_module_info Identity of a resource of the inventory.
# TYPE noxinfo_memory_module_info gauge
noxinfo_memory_module_info{resource_id="A",resource_type="PhysicalMemory",name="DIMM 1",memory_type="DDR4"} 1
noxinfo_memory_module_info{resource_id="B",resource_type="PhysicalMemory",name="DIMM 2"} 1
# HELP noxinfo_memory_module_size_bytes Size of a memory module.
# TYPE noxinfo_memory_module_size_bytes gauge
noxinfo_memory_module_size_bytes{resource_id="A",name="DIMM 1"} 1024
noxinfo_memory_module_size_bytes{resource_id="B",name="DIMM 2"} 2048
# EOF
)");
}

TEST(OpenMetricsWriter, KeepsTheFirstOfTwoSamplesOfOneSeries) {
    const std::string metrics =
        WriteMetrics({Module("A", {Text("Capacity", "1024")}), Module("A", {Text("Capacity", "2048")})});
    EXPECT_THAT(metrics, HasSubstr("noxinfo_memory_module_size_bytes{resource_id=\"A\"} 1024\n"));
    EXPECT_THAT(metrics, Not(HasSubstr("2048")));
}

TEST(OpenMetricsWriter, ConvertsToBaseUnits) {
    const auto metrics = WriteMetrics(
        {{"D", "DiskDrive", {}, {}, {Text("MaxMediaSize", "600127266")}},
         {"V", "LogicalVolume", {}, {}, {Text("NumberOfBlocks", "3"), Text("BlockSize", "512")}},
         {"E", "EthernetPort", {}, {}, {Text("Speed", "1000000000")}},
         {"B", "Battery", {}, {}, {Text("DesignCapacity", "50000"), Text("DesignVoltage", "11400")}},
         {"P", "Processor", {}, {}, {Text("MaxClockSpeed", "3000"), Text("NumberOfEnabledCores", "8")}}});
    EXPECT_THAT(metrics, HasSubstr("noxinfo_disk_size_bytes{resource_id=\"D\"} 600127266000\n"));
    EXPECT_THAT(metrics, HasSubstr("noxinfo_volume_size_bytes{resource_id=\"V\"} 1536\n"));
    EXPECT_THAT(metrics,
                HasSubstr("noxinfo_ethernet_port_speed_bytes_per_second{resource_id=\"E\"} 125000000\n"));
    EXPECT_THAT(metrics, HasSubstr("noxinfo_battery_design_capacity_joules{resource_id=\"B\"} 180000\n"));
    EXPECT_THAT(metrics, HasSubstr("noxinfo_battery_design_voltage_volts{resource_id=\"B\"} 11.4"));
    EXPECT_THAT(metrics, HasSubstr("noxinfo_processor_max_clock_hertz{resource_id=\"P\"} 3000000000\n"));
    EXPECT_THAT(metrics, HasSubstr("noxinfo_processor_enabled_cores{resource_id=\"P\"} 8\n"));
}

TEST(OpenMetricsWriter, LeavesOutSizesThatAreUnknownOrMalformed) {
    EXPECT_THAT(WriteMetrics({Module("A", {Text("Capacity", "0"), Text("Speed", "fast")}),
                              {"V", "LogicalVolume", {}, {}, {Text("NumberOfBlocks", "3")}}}),
                Not(HasSubstr("bytes")));
}

TEST(OpenMetricsWriter, WritesTheStateAsALabel) {
    EXPECT_THAT(WriteMetrics({{"D",
                               "DiskDrive",
                               {},
                               {},
                               {Text("Name", "sda"),
                                {"OperationalStatus", "unsignedShort", EShape::array, {"3", "5"}}}}}),
                HasSubstr("noxinfo_disk_operational_status{resource_id=\"D\",name=\"sda\","
                          "status=\"Degraded, Predictive Failure\"} 1\n"));
}

TEST(OpenMetricsWriter, EscapesLabels) {
    EXPECT_THAT(WriteMetrics({Module("A", {Text("Name", "a\"b\\c\nd\xFF")})}),
                HasSubstr("name=\"a\\\"b\\\\c\\nd\xEF\xBF\xBD\""));
}

TEST(OpenMetricsWriter, GivesTypesWithoutANameOfTheirOwnACommonMetric) {
    EXPECT_THAT(
        WriteMetrics({{"F", "Fan", {}, {}, {Text("Name", "Fan 1")}}}),
        HasSubstr("noxinfo_resource_info{resource_id=\"F\",resource_type=\"Fan\",name=\"Fan 1\"} 1\n"));
}

TEST(OpenMetricsWriter, LeavesOutTypesThatOnlyProgramsNeed) {
    EXPECT_EQ(WriteMetrics({{"M", "Memory", {}, {}, {Text("Name", "range")}}}), "# EOF\n");
}

TEST(OpenMetricsWriter, RefusesMoreMetricsThanACollectorOfFilesIsMeantFor) {
    constexpr int resourceCount = 17;
    std::vector<TResource> resources;
    resources.reserve(resourceCount);
    for (int i = 0; i < resourceCount; ++i) {
        resources.push_back(Module(std::to_string(i), {Text("Description", std::string(1 << 20, 'x'))}));
    }
    EXPECT_THROW(WriteMetrics(std::move(resources)), NVORHOST::TDocumentError);
}

TEST(Gauges, HaveTheUnitOfTheirNameAndNamesOfTheirOwn) {
    std::set<std::string_view> names;
    for (const TGauge& gauge : GetGauges()) {
        EXPECT_TRUE(names.insert(gauge.name).second) << gauge.name;
        const TMeaning* const meaning = FindMeaning(gauge.type, gauge.property);
        const std::string_view symbol = meaning == nullptr ? "" : GetSymbol(meaning->unit);
        const std::string_view unit = gauge.name.substr(gauge.name.rfind('_') + 1);
        EXPECT_EQ(unit == "cores", symbol.empty()) << gauge.name;
        EXPECT_EQ(unit == "bytes", symbol == "B" || symbol == "kB" || symbol == "KiB" || symbol == "blocks")
            << gauge.name;
        EXPECT_EQ(unit == "second", symbol == "bit/s" || symbol == "MT/s") << gauge.name;
        EXPECT_EQ(unit == "hertz", symbol == "MHz") << gauge.name;
        EXPECT_EQ(unit == "joules", symbol == "mWh") << gauge.name;
        EXPECT_EQ(unit == "volts", symbol == "mV") << gauge.name;
        EXPECT_EQ(unit == "watts", symbol == "mW") << gauge.name;
    }
}

}  // namespace
}  // namespace NINVENTORY
