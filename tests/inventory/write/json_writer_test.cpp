#include "inventory/write/json_writer.h"

#include <gtest/gtest.h>

#include <sstream>

namespace NINVENTORY {
namespace {

TResource MakeResource(std::vector<TProperty> properties) {
    return {"AB", "PhysicalMemory", "PhysicalElement", {}, std::move(properties)};
}

std::string WriteLine(std::vector<TProperty> properties) {
    std::ostringstream out;
    const auto writer = MakeNdjsonWriter(out);
    writer->BeginSource("s");
    writer->BeginDocument({EDocument::hardware, "u", "t"});
    writer->AddResource(MakeResource(std::move(properties)));
    writer->Finish();
    return out.str();
}

TEST(JsonWriter, WritesEveryDocumentWithItsResources) {
    std::ostringstream out;
    const auto writer = MakeJsonWriter(out);
    writer->BeginSource("a.xml");
    writer->BeginDocument({EDocument::hardware, "u", "2024-03-01T12:00:00+01:00"});
    writer->AddResource(MakeResource({{"Name", "string", EShape::scalar, {"DIMM"}}}));
    writer->AddResource(MakeResource({}));
    writer->BeginSource("b.xml");
    writer->BeginDocument({EDocument::systemInformation, "u", "t"});
    writer->Finish();
    EXPECT_EQ(out.str(),
              R"({"documents":[
{"source":"a.xml","kind":"hardware","timestamp":"2024-03-01T12:00:00+01:00","resources":[
{"resourceId":"AB","resourceType":"PhysicalMemory","properties":{"Name":{"value":"DIMM"}}},
{"resourceId":"AB","resourceType":"PhysicalMemory","properties":{}}
]},
{"source":"b.xml","kind":"systemInformation","timestamp":"t","resources":[
]}
]}
)");
}

TEST(JsonWriter, WritesAnEmptyListWithoutSources) {
    std::ostringstream out;
    MakeJsonWriter(out)->Finish();
    EXPECT_EQ(out.str(), "{\"documents\":[\n]}\n");
}

TEST(JsonWriter, WritesNumbersExactlyWithTheirUnits) {
    EXPECT_EQ(
        WriteLine({{"Capacity", "unsignedLong", EShape::scalar, {"18446744073709551615"}}}),
        R"({"source":"s","kind":"hardware","timestamp":"t","resourceId":"AB","resourceType":"PhysicalMemory",)"
        R"("properties":{"Capacity":{"value":18446744073709551615,"unit":"B"}}})"
        "\n");
    EXPECT_NE(WriteLine({{"X", "short", EShape::scalar, {"-32768"}}}).find("\"value\":-32768"),
              std::string::npos);
    EXPECT_NE(WriteLine({{"X", "float", EShape::scalar, {"0.5"}}}).find("\"value\":0.5"), std::string::npos);
}

TEST(JsonWriter, WritesWordsBesideCodes) {
    EXPECT_NE(WriteLine({{"MemoryType", "unsignedShort", EShape::scalar, {"26"}}})
                  .find(R"("MemoryType":{"value":26,"word":"DDR4"})"),
              std::string::npos);
    EXPECT_NE(WriteLine({{"OperationalStatus", "unsignedShort", EShape::array, {"2", "99"}}})
                  .find(R"("OperationalStatus":{"value":[2,99],"words":["OK",null]})"),
              std::string::npos);
}

TEST(JsonWriter, WritesTheTextOfAValueThatDoesNotHaveItsType) {
    EXPECT_NE(WriteLine({{"X", "unsignedInt", EShape::scalar, {"many"}}}).find(R"("value":"many")"),
              std::string::npos);
    EXPECT_NE(WriteLine({{"X", "boolean", EShape::scalar, {"TRUE"}}}).find(R"("value":"TRUE")"),
              std::string::npos);
    EXPECT_NE(WriteLine({{"X", "float", EShape::scalar, {"inf"}}}).find(R"("value":"inf")"),
              std::string::npos);
    EXPECT_NE(WriteLine({{"X", "boolean", EShape::scalar, {"false"}}}).find(R"("value":false)"),
              std::string::npos);
}

TEST(JsonWriter, EscapesControlsAndReplacesMalformedUtf8) {
    EXPECT_NE(WriteLine({{"X", "string", EShape::scalar, {"\"\\\n\x01\xFF"}}})
                  .find("\"value\":\"\\\"\\\\\\n\\u0001\xEF\xBF\xBD\""),
              std::string::npos);
}

TEST(JsonWriter, WritesNullAndTheFirstOfTwoPropertiesOfOneName) {
    EXPECT_NE(WriteLine({{"X", "dateTime", EShape::null, {}}}).find(R"("X":{"value":null})"),
              std::string::npos);
    EXPECT_NE(WriteLine({{"X", "string", EShape::scalar, {"1"}}, {"X", "string", EShape::scalar, {"2"}}})
                  .find(R"("properties":{"X":{"value":"1"}})"),
              std::string::npos);
}

}  // namespace
}  // namespace NINVENTORY
