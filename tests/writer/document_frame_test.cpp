#include "writer/document_frame.h"

#include "host/plugin_callbacks.h"
#include "tests/doubles/host_doubles.h"
#include "tests/writer/listed_instances.h"
#include "vorhost/model/memory_namespace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

using NVORHOST::TMemoryNamespace;
using testing::ElementsAre;
using testing::StartsWith;

class DocumentFrame : public testing::Test {
  protected:
    DocumentFrame() { NDOUBLES::ResetHost(); }

    boost::shared_ptr<TMemoryNamespace> collected = boost::make_shared<TMemoryNamespace>();
    std::ostringstream text;
    TLineOutput out{text};
};

TEST(ListTypes, AreTheTextsOfTheDocuments) {
    EXPECT_EQ(NKELVOR20::physicalElement, "PhysicalElement");
    EXPECT_EQ(NKELVOR20::logicalDevice, "LogicalDevice");
    EXPECT_EQ(NKELVOR20::noxSystemInfo, "NOXSystemInfo");
}

TEST_F(DocumentFrame, UsesTheNamespaceUriOfTheBuild) {
    EXPECT_THAT(NOXINFO_NAMESPACE_URI,
                testing::EndsWith("/xmlns/prod/SystemsManagement/v2.0/ResourceCollection"));
}

TEST_F(DocumentFrame, StartsWithDeclarationAndRootTag) {
    WriteDocumentStart(out, " time=\"");
    EXPECT_EQ(text.str(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<ResourceCollection xmlns=\"" NOXINFO_NAMESPACE_URI
              "\" time=\"2009-03-07T14:05:09+01:00\">\n");
}

TEST_F(DocumentFrame, EndsWithTheClosingRootTag) {
    WriteDocumentEnd(out);
    EXPECT_EQ(text.str(), "</ResourceCollection>\n");
}

TEST_F(DocumentFrame, HasCriteriaForTheSystemInformation) {
    WriteCriteria(out, "NOXSystemInfo", "an<id>");
    EXPECT_EQ(text.str(),
              "<ResourceCollectionCriteria criteriaName=\"NOXSystemInfo\" criteriaId=\"an<id>\">\n"
              "<ResourceListCriteria resourceType=\"NOXSystemInfo\" />\n"
              "</ResourceCollectionCriteria>\n");
}

TEST_F(DocumentFrame, HasNoCriteriaForAnyOtherName) {
    for (const char* name : {"test", "", "noxSystemInfo", "NOXSYSTEMINFO", "NOXSystemInfo "}) {
        WriteCriteria(out, name, "test");
        EXPECT_EQ(text.str(), "") << name;
    }
}

TEST_F(DocumentFrame, HasAFixedContextForTheSystemInformation) {
    WriteContext(out, "SystemInfo", nullptr);
    EXPECT_EQ(text.str(),
              "<ResourceCollectionContext>\n"
              "<ResourceInstance resourceName=\"NOXSystemInfo_ContextName\""
              " resourceId=\"NOXSystemInfo_Context_ID_1\" resourceType=\"NOXSystemInfo_Type\">\n"
              "<Property name=\"NOXSystemInfo_Name\" type=\"string\">\n"
              "<Value>SystemInfo</Value>\n"
              "</Property>\n"
              "</ResourceInstance>\n"
              "</ResourceCollectionContext>\n");
}

TEST_F(DocumentFrame, HasAnEmptyContextForAnyOtherName) {
    for (const char* name : {"", "hardwareInventory", "Systeminfo", "NOXSystemInfo"}) {
        text.str("");
        WriteContext(out, name, nullptr);
        EXPECT_EQ(text.str(), "<ResourceCollectionContext>\n</ResourceCollectionContext>\n") << name;
    }
}

TEST_F(DocumentFrame, HasComputerAndOperatingSystemAsHardwareContext) {
    AddKeyedInstance(*collected, "KELSG_OperatingSystem", "ElementName");
    AddKeyedInstance(*collected, "KELSG_ComputerSystem", "Name");
    WriteContext(out, "HardwareInventory", collected);
    EXPECT_THAT(ListedTypes(text.str()), ElementsAre("Server", "OperatingSystem"));
    EXPECT_THAT(text.str(), StartsWith("<ResourceCollectionContext>\n<ResourceInstance "));
    EXPECT_THAT(text.str(), testing::EndsWith("</ResourceInstance>\n</ResourceCollectionContext>\n"));
}

}  // namespace
