#include "inventory/check/validator.h"

#include "inventory/model/resource_id.h"
#include "inventory/read/document_reader.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace NINVENTORY {
namespace {

namespace fs = std::filesystem;

using TLines = std::vector<std::string>;

struct TProblems {
    TLines lines;
    TValidator validator{[this](const TProblem& problem) {
        lines.push_back(std::to_string(problem.line) + ": " + problem.text);
    }};
};

TProperty Text(std::string name, std::string value) {
    return {std::move(name), "string", EShape::scalar, {std::move(value)}};
}

TResource MakeProcessor(std::vector<TProperty> properties, int line = 7) {
    TResource resource{
        DigestOf(MakeKey("Processor", "DeviceID", "CPU0")), "Processor", "LogicalDevice", {}, {}, line};
    resource.properties = std::move(properties);
    return resource;
}

std::vector<TProperty> ProcessorProperties() {
    return {Text("Name", "CPU"), Text("ObjectType", "Processor"), Text("DeviceID", "CPU0")};
}

TLines Validate(std::vector<TResource> resources) {
    TProblems problems;
    problems.validator.BeginDocument({EDocument::hardware, "u", "2024-02-29T13:45:00+01:00"});
    for (const char* list : {"", "PhysicalElement", "LogicalDevice"}) {
        problems.validator.BeginList(list, 1);
    }
    for (TResource& resource : resources) {
        problems.validator.AddResource(std::move(resource));
    }
    problems.validator.Finish();
    return problems.lines;
}

TEST(Validator, AcceptsEveryDocumentOfTheMachinesButThoseOfBareKeys) {
    for (const auto& machine : fs::directory_iterator(NOXINFO_MACHINES)) {
        for (const char* name : {"expected.xml", "expected-system.xml"}) {
            if (!machine.is_directory()) {
                continue;
            }
            TProblems problems;
            TDocumentInput input((machine.path() / name).string());
            ReadDocument(input, problems.validator);
            problems.validator.Finish();
            for (const std::string& line : problems.lines) {
                // Machines without a UUID have a server with a bare key.
                EXPECT_NE(line.find("bare key: without SystemBoardUUID"), std::string::npos)
                    << machine.path() << " " << line;
            }
        }
    }
}

TEST(Validator, AcceptsAResourceOfTheCatalogue) {
    EXPECT_EQ(Validate({MakeProcessor(ProcessorProperties())}), TLines{});
}

TEST(Validator, ReportsUnknownTypesAndWrongLists) {
    TResource part = MakeProcessor({Text("ObjectType", "Part")});
    part.type = "Part";
    TResource misplaced = MakeProcessor(ProcessorProperties());
    misplaced.list = "PhysicalElement";
    EXPECT_EQ(Validate({part, misplaced}),
              (TLines{"7: unknown resource type \"Part\"",
                      "7: the resource type \"Processor\" does not belong to the list \"PhysicalElement\"",
                      "7: the resourceId is that of line 7 again"}));
}

TEST(Validator, ReportsPropertiesThatAreUnknownRepeatedOrNotInTheirPlace) {
    auto properties = ProcessorProperties();
    properties.push_back(Text("Colour", "red"));
    properties.push_back(Text("Description", "late"));
    properties.push_back(Text("Name", "again"));
    EXPECT_EQ(Validate({MakeProcessor(properties)}),
              (TLines{"7: unknown property \"Colour\"", "7: property \"Description\" is not in its place",
                      "7: property \"Name\" occurs twice"}));
}

TEST(Validator, ReportsValuesThatDoNotHaveTheirType) {
    auto properties = ProcessorProperties();
    properties.push_back({"OperationalStatus", "unsignedShort", EShape::array, {"2", "65536"}});
    properties.push_back({"AddressWidth", "number", EShape::scalar, {"64"}});
    EXPECT_EQ(Validate({MakeProcessor(properties)}),
              (TLines{"7: property \"OperationalStatus\": \"65536\" is not a valid unsignedShort",
                      "7: property \"AddressWidth\" has the unknown type \"number\""}));
}

TEST(Validator, ReportsIdentifiersThatAreNotThoseOfTheirKey) {
    TResource other =
        MakeProcessor({Text("Name", "CPU"), Text("ObjectType", "Processor"), Text("DeviceID", "CPU1")});
    TResource malformed = MakeProcessor(ProcessorProperties());
    malformed.id = "abc";
    EXPECT_EQ(Validate({other, malformed}),
              (TLines{"7: the resourceId is not that of DeviceID \"CPU1\"",
                      "7: the resourceId \"abc\" is not 32 upper-case hexadecimal digits",
                      "7: the resourceId is not that of DeviceID \"CPU0\""}));
}

TEST(Validator, ReportsBareKeys) {
    TResource bare = MakeProcessor({Text("Name", "CPU"), Text("ObjectType", "Processor")});
    TResource without = bare;
    bare.id = DigestOf(MakeBareKey("Processor"));
    TResource empty = bare;
    empty.id = DigestOf(MakeKey("Processor", "DeviceID", ""));
    EXPECT_EQ(Validate({bare, empty, without}),
              (TLines{"7: bare key: without DeviceID, the identifier is that of the type alone",
                      "7: bare key: without DeviceID, the identifier is that of the type alone",
                      "7: the resourceId is not that of the type, and DeviceID is missing"}));
}

TEST(Validator, ReportsIdentifiersThatOccurTwice) {
    EXPECT_EQ(
        Validate({MakeProcessor(ProcessorProperties(), 3), MakeProcessor(ProcessorProperties(), 9),
                  MakeProcessor(ProcessorProperties(), 12)}),
        (TLines{"9: the resourceId is that of line 3 again", "12: the resourceId is that of line 3 again"}));
}

TEST(Validator, ReportsTheWrongObjectTypeAndGuid) {
    TResource card{
        DigestOf(MakeKey("Card", "Tag", "Baseboard")),
        "Card",
        "PhysicalElement",
        {},
        {Text("Name", "B"), Text("ObjectType", "Board"), Text("Tag", "Baseboard"), Text("GUID", "x")},
        5};
    EXPECT_EQ(Validate({card}),
              (TLines{"5: the ObjectType is not \"Card\"", "5: the GUID is not the resourceId"}));
}

TEST(Validator, ReportsMissingAndUnexpectedLists) {
    TProblems problems;
    problems.validator.BeginDocument({EDocument::hardware, "u", "yesterday"});
    problems.validator.BeginList("LogicalDevice", 3);
    problems.validator.Finish();
    EXPECT_EQ(problems.lines,
              (TLines{"1: the timestamp \"yesterday\" is not a valid dateTime",
                      "3: unexpected list: the list \"LogicalDevice\"", "0: missing: the context",
                      "0: missing: the list \"PhysicalElement\""}));
}

TEST(Validator, ReportsSystemInformationThatContradictsItself) {
    TProblems problems;
    problems.validator.BeginDocument({EDocument::systemInformation, "u", "2024-02-29T13:45:00+01:00"});
    problems.validator.BeginList("NOXSystemInfo", 1);
    problems.validator.AddResource(
        {DigestOf(MakeSystemKey("M", "S")),
         "NOXSystemInfo",
         "NOXSystemInfo",
         "A,M-X-T",
         {Text("Manufacturer", "A"), Text("MachineType", "M"), Text("Model", "X"), Text("SerialNumber", "T")},
         14});
    problems.validator.Finish();
    EXPECT_EQ(problems.lines,
              TLines{"14: the resourceId is not that of MachineType \"M\" and SerialNumber \"T\""});
}

}  // namespace
}  // namespace NINVENTORY
