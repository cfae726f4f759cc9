#include "inventory/model/resource_id.h"
#include "tests/inventory/read/recorded_events.h"

#include <gtest/gtest.h>

#include <map>

namespace NINVENTORY {
namespace {

using TTexts = std::map<std::string, std::string>;

constexpr const char* names[] = {"Manufacturer", "MachineType", "Model",      "SerialNumber",
                                 "OSType",       "OSName",      "OSVersion",  "SystemName",
                                 "HostName",     "NoxVersion",  "ProductName"};

// Writes system information as its writer does: nothing is escaped, and an empty text has no value.
std::string Document(TTexts texts) {
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<ResourceCollection xmlns=\"http://u\" timestamp=\"t\">\n"
        "<ResourceCollectionCriteria criteriaName=\"NOXSystemInfo\" criteriaId=\"default.NOXSystemInfo\">\n"
        "<ResourceListCriteria resourceType=\"NOXSystemInfo\" />\n"
        "</ResourceCollectionCriteria>\n"
        "<ResourceCollectionContext>\n"
        "<ResourceInstance resourceName=\"NOXSystemInfo_ContextName\""
        " resourceId=\"NOXSystemInfo_Context_ID_1\" resourceType=\"NOXSystemInfo_Type\">\n"
        "<Property name=\"NOXSystemInfo_Name\" type=\"string\">\n"
        "<Value>SystemInfo</Value>\n"
        "</Property>\n"
        "</ResourceInstance>\n"
        "</ResourceCollectionContext>\n"
        "<ResourceList resourceType=\"NOXSystemInfo\">\n";
    const std::string id = DigestOf(MakeSystemKey(texts["MachineType"], texts["SerialNumber"]));
    text += "<ResourceInstance resourceId=\"" + id + "\" resourceName=\"" + texts["Manufacturer"] + "," +
            texts["MachineType"] + "-" + texts["Model"] + "-" + texts["SerialNumber"] +
            "\" resourceType=\"NOXSystemInfo\">\n";
    for (const char* name : names) {
        const std::string& value = texts[name];
        text += std::string("<Property name=\"") + name + "\" type=\"string\">\n" +
                (value.empty() ? "" : "<Value>" + value + "</Value>\n") + "</Property>\n";
    }
    return text + "</ResourceInstance>\n</ResourceList>\n</ResourceCollection>\n";
}

TTexts Read(const std::string& text) {
    const TRecordedEvents events = ReadText(text);
    TTexts texts;
    for (const TProperty& property : events.resources.at(0).properties) {
        if (property.shape == EShape::scalar) {
            texts[property.name] = property.values.front();
        }
    }
    return texts;
}

const TTexts plain = {{"Manufacturer", "Example"}, {"MachineType", "7X06"}, {"SerialNumber", "J1"},
                      {"SystemName", "node"},      {"HostName", "node"},    {"ProductName", "KEL Vorcheck"}};

TEST(SystemInformationReader, ReadsValuesAndTheirAbsence) {
    const TRecordedEvents events = ReadText(Document(plain));
    const TResource& resource = events.resources.at(0);
    EXPECT_EQ(events.head.timestamp, "t");
    EXPECT_EQ(events.lists, std::vector<std::string>{"NOXSystemInfo"});
    EXPECT_EQ(resource.name, "Example,7X06--J1");
    EXPECT_EQ(resource.line, 14);
    EXPECT_EQ(resource.Find("Model")->shape, EShape::null);
    EXPECT_EQ(Read(Document(plain)), plain);
}

TEST(SystemInformationReader, KeepsMarkupLineEndsAndAnyByte) {
    TTexts texts = plain;
    texts["Manufacturer"] = "A & B <Ltd> \"quoted\"";
    texts["Model"] = std::string("\0\n\r\xFF", 4);
    texts["OSName"] = "</Value>";
    EXPECT_EQ(Read(Document(texts)), texts);
}

TEST(SystemInformationReader, ReadsAValueThatLooksLikeTheNextPropertyByTheResourceName) {
    TTexts texts = plain;
    texts["Manufacturer"] =
        "Example</Value>\n</Property>\n<Property name=\"MachineType\" type=\"string\">\n<Value>X";
    EXPECT_EQ(Read(Document(texts)), texts);
    texts = plain;
    texts["Model"] = "\" resourceType=\"NOXSystemInfo\">\n<Property name=\"Manufacturer\" type=\"string\">\n";
    EXPECT_EQ(Read(Document(texts)), texts);
}

TEST(SystemInformationReader, RejectsTruncatedDocuments) {
    const std::string whole = Document(plain);
    EXPECT_EQ(FindError(whole.substr(0, whole.size() - 1)), "document:41: truncated document");
    EXPECT_EQ(FindError(whole.substr(0, 300)), "document:3: truncated document");
}

TEST(SystemInformationReader, RejectsAnotherFrame) {
    std::string text = Document(plain);
    text.replace(text.find("<Property name=\"OSName\""), 9, "<property");
    EXPECT_EQ(FindError(text), "document:27: malformed system information");
    EXPECT_EQ(FindError("<ResourceCollection a=\"\">\n<ResourceCollectionCriteria>\n"),
              "document:1: expected \"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\"");
}

TEST(SystemInformationReader, RefusesTextThatCanBeReadInTooManyWays) {
    TTexts texts = plain;
    std::string value = "v";
    for (int i = 0; i < 60; ++i) {
        for (const char* name : {"OSName", "OSVersion", "SystemName"}) {
            value += std::string("</Value>\n</Property>\n<Property name=\"") + name +
                     "\" type=\"string\">\n<Value>";
        }
    }
    for (const char* name : {"OSType", "OSName", "OSVersion", "NoxVersion", "Model"}) {
        texts[name] = value;
    }
    std::string text = Document(texts);
    text.replace(text.find("resourceName=\"Example"), 15, "resourceName=\"X");
    EXPECT_EQ(FindError(text), "document:14: the values can be read in too many ways");
}

}  // namespace
}  // namespace NINVENTORY
