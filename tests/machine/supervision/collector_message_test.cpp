#include "machine/supervision/collector_message.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using TCIMType = TCIMValue::TCIMType;

TEST(CollectorMessage, TransfersEveryMemberOfAReport) {
    TCollectReport report;
    report.failure = "out of order";
    report.deniedSources = {"/denied/1", "/denied/2"};
    report.failedSources = {"/failed"};
    report.timedOutSources = {"/timed/out"};
    report.asleepSources = {"/asleep"};
    report.essentialFailure = "/proc/cpuinfo: Input/output error";
    report.notes = {"note"};
    report.warnings = {"warning"};
    report.values = {7, 6, 5, 4, 3, 2, 1, 0};
    report.instances = 300;
    report.replacedBytes = 5;
    report.duration = std::chrono::nanoseconds(123456789);
    const TCollector& collector = GetCollectors().front();
    TMessageWriter message;
    WriteReport(report, message);
    TMessageReader reader(message.GetBytes());
    const TCollectReport read = ReadReport(collector, reader);
    EXPECT_EQ(read.collector, collector.name);
    EXPECT_EQ(read.failure, "out of order");
    EXPECT_EQ(read.deniedSources, (std::vector<std::string>{"/denied/1", "/denied/2"}));
    EXPECT_EQ(read.failedSources, std::vector<std::string>{"/failed"});
    EXPECT_EQ(read.timedOutSources, std::vector<std::string>{"/timed/out"});
    EXPECT_EQ(read.asleepSources, std::vector<std::string>{"/asleep"});
    EXPECT_EQ(read.essentialFailure, "/proc/cpuinfo: Input/output error");
    EXPECT_EQ(read.notes, std::vector<std::string>{"note"});
    EXPECT_EQ(read.warnings, std::vector<std::string>{"warning"});
    EXPECT_EQ(read.values, (TValueCounts{7, 6, 5, 4, 3, 2, 1, 0}));
    EXPECT_EQ(read.instances, 300U);
    EXPECT_EQ(read.replacedBytes, 5U);
    EXPECT_EQ(read.duration.count(), 123456789);
}

TEST(CollectorMessage, TransfersAReportWithoutAFailure) {
    TMessageWriter message;
    WriteReport({}, message);
    TMessageReader reader(message.GetBytes());
    const TCollectReport read = ReadReport(GetCollectors().front(), reader);
    EXPECT_EQ(read.failure, std::nullopt);
    EXPECT_EQ(read.essentialFailure, std::nullopt);
}

// Transfers one instance with this value and returns the received value.
TCIMValue Transfer(const TCIMValue& value) {
    const TCollector& collector = GetCollectors().front();
    const std::string className(collector.fills.front()->GetName());
    TMemoryNamespace source;
    TMemoryNamespace target;
    for (const IClassDeclaration* declaration : collector.fills) {
        source.AddClass(std::string(declaration->GetName()));
        target.AddClass(std::string(declaration->GetName()));
    }
    const auto instance = source.FindClass(className)->NewInstance();
    instance->Set("Property", value);
    instance->CommitInstance({});
    TMessageWriter message;
    TInstancesWriter(source).WriteNew(collector, message);
    TMessageReader reader(message.GetBytes());
    ReadInstances(collector, reader, target);
    return *target.FindClass(className)->GetInstances().at(0)->Find("Property");
}

TEST(CollectorMessage, TransfersValuesOfEveryType) {
    for (const TCIMValue& value :
         {TCIMValue(true), TCIMValue(char16_t{0x20AC}), TCIMValue(std::uint8_t{255}),
          TCIMValue(std::int8_t{-128}), TCIMValue(std::uint16_t{65535}), TCIMValue(std::int16_t{-1}),
          TCIMValue(std::uint32_t{1} << 31U), TCIMValue(std::int32_t{-2}), TCIMValue(std::uint64_t{1} << 63U),
          TCIMValue(std::int64_t{-3}), TCIMValue(0.1F), TCIMValue(0.1), TCIMValue("text"),
          TCIMValue(*TCIMDateTime::FromText("20240229134500.123456+060")),
          TCIMValue::Reference("Class.Key=1")}) {
        EXPECT_EQ(Transfer(value), value) << value.ToString(10);
    }
}

TEST(CollectorMessage, TransfersNullsAndArrays) {
    const TCIMValue null(TCIMType::eString);
    for (const TCIMValue& value :
         {null, TCIMValue::NullArray(TCIMType::eUint16), TCIMValue::Array(TCIMType::eUint16, {}),
          TCIMValue::Array(TCIMType::eString, {TCIMValue("a"), null, TCIMValue("")})}) {
        EXPECT_EQ(Transfer(value), value) << value.ToString(10);
    }
}

TEST(CollectorMessage, TransfersSourcesOfPropertiesAndOfClasses) {
    const TCollector& collector = GetCollectors().front();
    TMemoryNamespace source;
    TMemoryNamespace target;
    for (const IClassDeclaration* declaration : collector.fills) {
        source.AddClass(std::string(declaration->GetName()));
        target.AddClass(std::string(declaration->GetName()));
    }
    const TValueSource missing{EValueStatus::placeholder, {"type 1, 07h"}, "None", {}};
    const TValueSource gaps{EValueStatus::present, {"/a", "/b"}, "", {"Serial number: denied"}};
    const TValueSource denied{EValueStatus::denied, {"type 1, 08h"}, "", {}};
    const auto instance = source.GetClasses().front()->NewInstance();
    instance->SetSource("Missing", missing);
    instance->SetSource("Gaps", gaps);
    instance->CommitInstance({});
    source.GetClasses().front()->SetSource(denied);
    TMessageWriter message;
    TInstancesWriter(source).WriteNew(collector, message);
    TMessageReader reader(message.GetBytes());
    ReadInstances(collector, reader, target);
    const auto& read = *target.GetClasses().front();
    EXPECT_EQ(*read.GetInstances().at(0)->FindSource("Missing"), missing);
    EXPECT_EQ(*read.GetInstances().at(0)->FindSource("Gaps"), gaps);
    EXPECT_EQ(read.GetSource(), denied);
}

TEST(InstancesWriter, WritesEachInstanceOnce) {
    const TCollector& collector = GetCollectors().front();
    TMemoryNamespace source;
    for (const IClassDeclaration* declaration : collector.fills) {
        source.AddClass(std::string(declaration->GetName()));
    }
    source.GetClasses().front()->NewInstance()->CommitInstance({});
    TInstancesWriter writer(source);
    TMessageWriter first;
    writer.WriteNew(collector, first);
    TMessageWriter second;
    writer.WriteNew(collector, second);
    EXPECT_EQ(TMessageReader(first.GetBytes()).ReadNumber(), 1U);
    EXPECT_EQ(TMessageReader(second.GetBytes()).ReadNumber(), 0U);
}

}  // namespace
}  // namespace NVORHOST
