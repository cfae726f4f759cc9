#include "inventory/read/hardware_reader.h"

#include "tests/inventory/read/recorded_events.h"

#include <gtest/gtest.h>

namespace NINVENTORY {
namespace {

constexpr std::string_view head =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<ResourceCollection xmlns=\"http://u\" timestamp= \"t\">\n";

std::string Document(std::string_view content) {
    return std::string(head).append(content).append("</ResourceCollection>\n");
}

// `properties` begins on line 5.
std::string DocumentOfOne(std::string_view properties) {
    return Document(std::string("<ResourceList resourceType=\"LogicalDevice\">\n"
                                "<ResourceInstance resourceId=\"AB\" resourceType=\"DiskDrive\">\n")
                        .append(properties)
                        .append("</ResourceInstance>\n</ResourceList>\n"));
}

TEST(HardwareReader, ReadsResourcesWithTheirProperties) {
    const TRecordedEvents events =
        ReadText(DocumentOfOne("<Property name=\"Name\" type=\"string\">\n"
                               "<Value>SSD</Value>\n</Property>\n"
                               "<Property name=\"OperationalStatus\""
                               " type=\"unsignedShort\">\n<VALUE.ARRAY>\n"
                               "<VALUE>2</VALUE>\n<VALUE>11</VALUE>\n"
                               "</VALUE.ARRAY>\n</Property>\n"
                               "<Property name=\"Last\" type=\"dateTime\">\n"
                               "</Property>\n"));
    ASSERT_EQ(events.resources.size(), 1U);
    const TResource& disk = events.resources.front();
    EXPECT_EQ(disk.id, "AB");
    EXPECT_EQ(disk.type, "DiskDrive");
    EXPECT_EQ(disk.list, "LogicalDevice");
    EXPECT_EQ(disk.line, 4);
    const std::vector<TProperty> expected = {
        {"Name", "string", EShape::scalar, {"SSD"}},
        {"OperationalStatus", "unsignedShort", EShape::array, {"2", "11"}},
        {"Last", "dateTime", EShape::null, {}}};
    EXPECT_EQ(disk.properties, expected);
}

TEST(HardwareReader, ResolvesReferencesAndKeepsBlanks) {
    const TRecordedEvents events =
        ReadText(DocumentOfOne("<Property name=\"Name\" type=\"string\">\n"
                               "<Value> R&amp;D &lt;1&gt;\t </Value>\n</Property>\n"));
    EXPECT_EQ(events.resources.at(0).GetText("Name"), " R&D <1>\t ");
}

TEST(HardwareReader, KeepsAnEmptyValueApartFromNone) {
    const TRecordedEvents events =
        ReadText(DocumentOfOne("<Property name=\"A\" type=\"string\">\n<Value></Value>\n</Property>\n"
                               "<Property name=\"B\" type=\"string\">\n<VALUE.ARRAY>\n</VALUE.ARRAY>\n"
                               "</Property>\n"));
    EXPECT_EQ(events.resources.at(0).properties.at(0).shape, EShape::scalar);
    EXPECT_EQ(events.resources.at(0).properties.at(1).shape, EShape::array);
    EXPECT_TRUE(events.resources.at(0).properties.at(1).values.empty());
}

// Copies the resources and leaves them with the reader, as a receiver does that only looks at them.
class TCopiedResources final : public IDocumentEvents {
  public:
    void BeginDocument(const TDocumentHead& /*head*/) override {}
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    // NOLINTNEXTLINE(*-rvalue-reference-param-not-moved): this is the case that is tested
    void AddResource(TResource&& resource) override { resources.push_back(resource); }

    std::vector<TResource> resources;
};

TEST(HardwareReader, KeepsResourcesApartThatTheReceiverLeavesWithIt) {
    TDocumentInput input("document",
                         "<ResourceCollection timestamp=\"t\"><ResourceList resourceType=\"L\">"
                         "<ResourceInstance resourceId=\"A\" resourceType=\"Card\">"
                         "<Property name=\"P\" type=\"string\"><VALUE.ARRAY><VALUE>1</VALUE><VALUE>2</VALUE>"
                         "</VALUE.ARRAY></Property>"
                         "<Property name=\"Q\" type=\"string\"><Value>3</Value></Property></ResourceInstance>"
                         "<ResourceInstance resourceId=\"B\" resourceType=\"Slot\">"
                         "<Property name=\"R\" type=\"int\"></Property></ResourceInstance>"
                         "<ResourceInstance resourceId=\"C\" resourceType=\"Card\">"
                         "<Property name=\"P\" type=\"string\"><Value>4</Value></Property>"
                         "<Property name=\"Q\" type=\"string\"></Property></ResourceInstance>"
                         "</ResourceList></ResourceCollection>");
    TCopiedResources events;
    ReadDocument(input, events);
    ASSERT_EQ(events.resources.size(), 3U);
    EXPECT_EQ(events.resources[1].id, "B");
    EXPECT_EQ(events.resources[1].type, "Slot");
    EXPECT_EQ(events.resources[1].properties, (std::vector<TProperty>{{"R", "int", EShape::null, {}}}));
    EXPECT_EQ(events.resources[2].properties, (std::vector<TProperty>{{"P", "string", EShape::scalar, {"4"}},
                                                                      {"Q", "string", EShape::null, {}}}));
}

TEST(HardwareReader, RejectsElementsAndTextsThatTheFormatDoesNotHave) {
    EXPECT_EQ(FindError(DocumentOfOne("<Part/>\n")), "document:5: unexpected element \"Part\"");
    EXPECT_EQ(FindError(DocumentOfOne("<Property name=\"A\" type=\"string\"><VALUE>1</VALUE></Property>")),
              "document:5: unexpected element \"VALUE\"");
    EXPECT_EQ(FindError(DocumentOfOne("stray")), "document:5: unexpected text \"stray\"");
    EXPECT_EQ(FindError(Document("<ResourceInstance/>")),
              "document:3: unexpected element \"ResourceInstance\"");
}

TEST(HardwareReader, RejectsTwoValuesOfOneProperty) {
    EXPECT_EQ(FindError(DocumentOfOne("<Property name=\"A\" type=\"string\">\n<Value>1</Value>\n"
                                      "<Value>2</Value>\n</Property>\n")),
              "document:7: property \"A\" has two values");
    EXPECT_EQ(FindError(DocumentOfOne("<Property name=\"A\" type=\"string\">\n<Value>1</Value>\n"
                                      "<VALUE.ARRAY>\n</VALUE.ARRAY>\n</Property>\n")),
              "document:7: property \"A\" has two values");
}

TEST(HardwareReader, RejectsMissingAttributes) {
    EXPECT_EQ(FindError(Document("<ResourceList>\n</ResourceList>\n")),
              "document:3: <ResourceList> has no attribute resourceType");
    EXPECT_EQ(FindError(DocumentOfOne("<Property type=\"string\">\n</Property>\n")),
              "document:5: <Property> has no attribute name");
    EXPECT_EQ(FindError("<ResourceCollection>\n</ResourceCollection>\n"),
              "document:1: <ResourceCollection> has no attribute timestamp");
}

TEST(HardwareReader, RejectsDocumentsThatAreTruncatedOrFollowedByGarbage) {
    const std::string whole = DocumentOfOne("");
    EXPECT_EQ(FindError(whole), "");
    EXPECT_EQ(FindError(whole.substr(0, whole.size() - 22)), "document:6: truncated document");
    EXPECT_EQ(FindError(whole + "<again/>"), "document:8: Extra content at the end of the document");
}

TEST(HardwareReader, RejectsDeclaredEntities) {
    EXPECT_EQ(FindError("<!DOCTYPE ResourceCollection [<!ENTITY a \"b\">]>\n" + DocumentOfOne("")),
              "document: is not an inventory document");
    EXPECT_EQ(FindError(DocumentOfOne("<Property name=\"A\" type=\"string\"><Value>&a;</Value></Property>")),
              "document:5: Entity 'a' not defined");
}

TEST(HardwareReader, RejectsAResourceOfUnreasonableSize) {
    const std::string value(maxResourceBytes, 'x');
    EXPECT_EQ(FindError(DocumentOfOne("<Property name=\"A\" type=\"string\"><Value>" + value +
                                      "</Value></Property>")),
              "document:5: a resource is larger than 8388608 bytes");
}

}  // namespace
}  // namespace NINVENTORY
