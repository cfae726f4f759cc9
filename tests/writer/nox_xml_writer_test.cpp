// Each operation of the interface reaches its part of the engine with its arguments in place. The tests of
// the parts are beside this file.
#include "writer/nox_xml_writer.h"

#include "host/cim_date_time.h"
#include "tests/doubles/cim_doubles.h"
#include "tests/doubles/host_doubles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ios>
#include <sstream>
#include <string>
#include <type_traits>

namespace {

using NDOUBLES::TNamespaceDouble;
using NKELVOR20::TCIMDateTime;
using NKELVOR20::TCIMValue;
using TWriter = TNOXXMLWriterImpl;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

static_assert(!std::is_polymorphic_v<TWriter>);
static_assert(!std::is_copy_constructible_v<TWriter>);

class NoxXmlWriter : public testing::Test {
  protected:
    NoxXmlWriter() { NDOUBLES::ResetHost(); }

    boost::shared_ptr<NDOUBLES::TInstanceDouble> AddProcessor() {
        const auto instance = collected->AddClass("KELSG_Processor")->AddInstance();
        instance->Add("DeviceID", "CPU0");
        return instance;
    }

    boost::shared_ptr<TNamespaceDouble> collected = boost::make_shared<TNamespaceDouble>();
    std::ostringstream out;
    TWriter writer{out};
};

constexpr char cpu0Id[] = "F0412DDD4EDFB7E918E1782A3245949C";

TEST_F(NoxXmlWriter, WritesTheHardwareDocument) {
    EXPECT_TRUE(writer.WriteNamespace(collected));
    EXPECT_THAT(out.str(),
                StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ResourceCollection xmlns="));
    EXPECT_THAT(out.str(), HasSubstr("\" timestamp= \""));
    EXPECT_THAT(out.str(), EndsWith("<ResourceList resourceType=\"LogicalDevice\">\n"
                                    "</ResourceList>\n</ResourceCollection>\n"));
}

TEST_F(NoxXmlWriter, WritesTheSystemInformationDocument) {
    EXPECT_TRUE(writer.WriteSysInfoNamespace(collected));
    EXPECT_THAT(out.str(), HasSubstr("\" timestamp=\""));
    EXPECT_THAT(out.str(), HasSubstr("<Value>KEL Vorcheck</Value>\n"));
}

TEST_F(NoxXmlWriter, ReturnsTrueOnAFailedStream) {
    out.setstate(std::ios_base::failbit);
    EXPECT_TRUE(writer.WriteNamespace(collected));
    EXPECT_TRUE(writer.WriteSysInfoNamespace(collected));
    EXPECT_EQ(out.str(), "");
}

TEST_F(NoxXmlWriter, HasMapOperationsWithoutEffect) {
    writer.InitMap();
    writer.DeInitMap();
    EXPECT_EQ(out.str(), "");
}

TEST_F(NoxXmlWriter, WritesCriteriaWithNameAndIdInOrder) {
    EXPECT_TRUE(writer.WriteResourceCollectionCriteria("NOXSystemInfo", "an id", collected));
    EXPECT_THAT(out.str(), StartsWith("<ResourceCollectionCriteria criteriaName=\"NOXSystemInfo\""
                                      " criteriaId=\"an id\">\n"));
}

TEST_F(NoxXmlWriter, WritesTheNamedContext) {
    EXPECT_TRUE(writer.WriteResourceCollectionContext("SystemInfo", nullptr));
    EXPECT_THAT(out.str(), HasSubstr("<Value>SystemInfo</Value>\n"));
}

TEST_F(NoxXmlWriter, WritesNoStatusBlock) {
    EXPECT_TRUE(writer.WriteResourceCollectionStatus(collected));
    EXPECT_EQ(out.str(), "");
}

TEST_F(NoxXmlWriter, WritesTheResourceListOfAType) {
    AddProcessor();
    EXPECT_TRUE(writer.WriteResourceList("LogicalDevice", collected));
    EXPECT_THAT(out.str(), StartsWith("<ResourceList resourceType=\"LogicalDevice\">\n<ResourceInstance "));
}

TEST_F(NoxXmlWriter, WritesTheSystemListWithTheGivenType) {
    EXPECT_TRUE(writer.WriteResourceListForSysInfo("T", collected));
    EXPECT_THAT(out.str(), StartsWith("<ResourceList resourceType=\"T\">\n<ResourceInstance "));
}

TEST_F(NoxXmlWriter, WritesASystemPropertyWithNameValueAndTypeInOrder) {
    EXPECT_TRUE(writer.WriteSysInfoProperty("N", "v", "t"));
    EXPECT_EQ(out.str(), "<Property name=\"N\" type=\"t\">\n<Value>v</Value>\n</Property>\n");
}

TEST_F(NoxXmlWriter, ReadsTheManufacturer) {
    collected->AddClass("KELSG_ComputerSystem")->AddInstance()->Add("Manufacturer", "Kessel");
    EXPECT_EQ(TWriter::GetUSMIManufacturer(collected), "Kessel");
}

TEST_F(NoxXmlWriter, ConvertsAnOsCodeToPlatformAndName) {
    EXPECT_EQ(TWriter::ConvertOSType(77), "win64");
    EXPECT_EQ(TWriter::ConvertOSName(77), "Windows server 2008");
}

TEST_F(NoxXmlWriter, WritesInstancesUnderTheResourceTypeForEitherFlag) {
    AddProcessor();
    writer.WriteResourceInstance("KELSG_Processor", "Listed", collected, /*flag=*/true);
    const std::string withFlag = out.str();
    EXPECT_THAT(withFlag, HasSubstr("\" resourceType=\"Listed\">\n"));
    out.str("");
    writer.WriteResourceInstance("KELSG_Processor", "Listed", collected, /*flag=*/false);
    EXPECT_EQ(out.str(), withFlag);
}

TEST_F(NoxXmlWriter, EnumeratesInstancesWithTrueForEitherFlag) {
    const auto processors = collected->AddClass("KELSG_Processor");
    writer.WriteResourceInstance("KELSG_Processor", "Processor", collected, /*flag=*/true);
    writer.WriteResourceInstance("KELSG_Processor", "Processor", collected, /*flag=*/false);
    EXPECT_THAT(processors->calls, ElementsAre("EnumerateInstances true", "EnumerateInstances true"));
}

TEST_F(NoxXmlWriter, WritesAPropertyUnderItsOutputName) {
    EXPECT_TRUE(writer.WriteResourceProperty("Name", "DeviceID", AddProcessor()));
    EXPECT_EQ(out.str(), "<Property name=\"Name\" type=\"string\">\n<Value>CPU0</Value>\n</Property>\n");
}

TEST_F(NoxXmlWriter, ReturnsFalseForAMissingProperty) {
    EXPECT_FALSE(writer.WriteResourceProperty("Name", "ElementName", AddProcessor()));
    EXPECT_EQ(out.str(), "");
}

TEST_F(NoxXmlWriter, WritesAValue) {
    writer.WriteValue(TCIMValue("a<b"));
    EXPECT_EQ(out.str(), "<Value>a&lt;b</Value>\n");
}

TEST_F(NoxXmlWriter, ConvertsTexts) {
    EXPECT_EQ(TWriter::QuoteString("A&B <c>"), "A&amp;B &lt;c&gt;");
    EXPECT_EQ(TWriter::ConvertTypeFromCIM("uint32"), "unsignedInt");
    EXPECT_EQ(TWriter::GetMachineTypeFromCIM("Server -[1234AB5]-"), "1234");
    EXPECT_EQ(TWriter::GetModelNumber("Server -[1234AB5]-"), "AB5");
}

TEST_F(NoxXmlWriter, MakesAResourceIdFromOneKeyPropertyOrTwoAndIgnoresTheReservedArgument) {
    const auto processor = AddProcessor();
    processor->Add("Tag", "T1");
    EXPECT_EQ(TWriter::GetResourceID("Processor", processor, "DeviceID", "", ""), cpu0Id);
    EXPECT_EQ(TWriter::GetResourceID("Processor", processor, "DeviceID", "", "anything"), cpu0Id);
    EXPECT_EQ(TWriter::GetResourceID("Processor", processor, "DeviceID", "Tag", ""),
              "F466D8FE8A4C8CF39FCC99F1AC96FD6A");
}

TEST_F(NoxXmlWriter, DigestsBytesAsText) {
    unsigned char digest[TWriter::digestLength];
    TWriter::MD5("abc", 3, digest);
    EXPECT_EQ(std::string(std::begin(digest), std::end(digest)), "900150983CD24FB0D6963F7D28E17F72");
}

TEST_F(NoxXmlWriter, UpdatesChainingWordsAndWritesThemAsText) {
    unsigned char block[64] = {'a', 0x80};  // the whole padded message "a"
    block[56] = 8;
    std::uint32_t words[] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    TWriter::transform(block, words[0], words[1], words[2], words[3]);
    unsigned char text[TWriter::digestLength];
    TWriter::toString(words, text);
    EXPECT_EQ(std::string(std::begin(text), std::end(text)), "0CC175B9C0F1B6A831C399E269772661");
}

TEST_F(NoxXmlWriter, FormatsDates) {
    EXPECT_EQ(TWriter::ConvertCIMDateToUSMI(*TCIMDateTime::FromText("20261231235958.123456-300")),
              "2026-12-31T23:59:58-05:00");
    EXPECT_EQ(TWriter::GetRCFTime(), "2009-03-07T14:05:09+01:00");
}

TEST_F(NoxXmlWriter, ReleasesTheNamespace) {
    writer.WriteNamespace(collected);
    EXPECT_EQ(collected.use_count(), 1);
}

}  // namespace
