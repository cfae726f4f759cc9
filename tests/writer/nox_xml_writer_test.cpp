#include "writer/nox_xml_writer.h"

#include "host/plugin_callbacks.h"
#include "host/vor_exception.h"
#include "tests/doubles/cim_doubles.h"
#include "tests/doubles/host_doubles.h"
#include "tests/writer/spy_buffer.h"
#include "vorhost/model/memory_namespace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ios>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using NDOUBLES::TNamespaceDouble;
using NKELVOR20::TVORException;
using NVORHOST::TMemoryNamespace;
using testing::ElementsAre;
using testing::StartsWith;
using testing::ThrowsMessage;

constexpr char rootTag[] =
    "<ResourceCollection xmlns=\"" NOXINFO_NAMESPACE_URI "\" timestamp= \"2009-03-07T14:05:09+01:00\">\n";

class Document : public testing::Test {
  protected:
    Document() { NDOUBLES::ResetHost(); }

    std::string Text() const { return out.str(); }

    boost::shared_ptr<TMemoryNamespace> collected = boost::make_shared<TMemoryNamespace>();
    std::ostringstream out;
    TNOXXMLWriterImpl writer{out};
};

static_assert(!std::is_polymorphic_v<TNOXXMLWriterImpl>);
static_assert(!std::is_copy_constructible_v<TNOXXMLWriterImpl>);

TEST(ListTypes, AreTheTextsOfTheDocuments) {
    EXPECT_EQ(NKELVOR20::physicalElement, "PhysicalElement");
    EXPECT_EQ(NKELVOR20::logicalDevice, "LogicalDevice");
    EXPECT_EQ(NKELVOR20::noxSystemInfo, "NOXSystemInfo");
}

TEST_F(Document, OfAnEmptyNamespaceHasNineLines) {
    EXPECT_TRUE(writer.WriteNamespace(collected));
    EXPECT_EQ(Text(), std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n") + rootTag +
                          "<ResourceCollectionContext>\n"
                          "</ResourceCollectionContext>\n"
                          "<ResourceList resourceType=\"PhysicalElement\">\n"
                          "</ResourceList>\n"
                          "<ResourceList resourceType=\"LogicalDevice\">\n"
                          "</ResourceList>\n"
                          "</ResourceCollection>\n");
}

TEST_F(Document, UsesTheNamespaceUriOfTheBuild) {
    EXPECT_THAT(NOXINFO_NAMESPACE_URI,
                testing::EndsWith("/xmlns/prod/SystemsManagement/v2.0/ResourceCollection"));
}

TEST_F(Document, IsFlushedOnceForEachLine) {
    TSpyBuffer buffer;
    std::ostream stream(&buffer);
    TNOXXMLWriterImpl(stream).WriteNamespace(collected);
    EXPECT_EQ(buffer.flushes.size(), 9U);
    EXPECT_EQ(buffer.flushes[1], rootTag);
}

TEST_F(Document, TakesItsTimeBeforeItWritesAnything) {
    NDOUBLES::Host().localTime = []() -> NKELVOR20::TCIMDateTime { throw std::runtime_error("clock"); };
    EXPECT_THAT([&] { writer.WriteNamespace(collected); }, ThrowsMessage<std::runtime_error>("clock"));
    EXPECT_EQ(Text(), "");
}

TEST_F(Document, IsWrittenAgainByTheNextCall) {
    writer.WriteNamespace(collected);
    const std::string once = Text();
    writer.WriteNamespace(collected);
    EXPECT_EQ(Text(), once + once);
}

TEST_F(Document, AsksForItsClassesInOrder) {
    const auto spy = boost::make_shared<TNamespaceDouble>();
    writer.WriteNamespace(spy);
    EXPECT_THAT(
        spy->calls,
        ElementsAre("GetClass KELSG_ComputerSystem", "GetClass KELSG_OperatingSystem",
                    "GetClass KELSG_SystemSlot", "GetClass KELSG_SPDData", "GetClass KELSG_Card",
                    "GetClass KELSG_Processor", "GetClass KELSG_DiskDrive", "GetClass CIM_DiskDrive",
                    "GetClass KELSG_DisketteDrive", "GetClass KELSG_TapeDrive", "GetClass KELSG_CDROMDrive",
                    "GetClass KELSG_DVDDrive", "GetClass CIM_DiskPartition", "GetClass KELSG_ACPI",
                    "GetClass KELSG_MAS", "GetClass KELSG_LSILogicalDisk", "GetClass KELSG_LSIIDELogicalDisk",
                    "GetClass KELSG_srLogicalDisk", "GetClass KELSG_LogicalDisk",
                    "GetClass KELSG_IDEProtocolController", "GetClass KELSG_USBPort",
                    "GetClass KELSG_VideoController", "GetClass KELSG_PCIDevice", "GetClass KELSG_PCIBridge",
                    "GetClass KELSG_USBController"));
}

TEST_F(Document, EndsWhereTheHostThrows) {
    const auto failing = boost::make_shared<TNamespaceDouble>();
    failing->before = [](const std::string& call) {
        if (call == "GetClass KELSG_SystemSlot") {
            throw TVORException(2);
        }
    };
    EXPECT_THROW(writer.WriteNamespace(failing), TVORException);
    EXPECT_EQ(Text(), std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n") + rootTag +
                          "<ResourceCollectionContext>\n"
                          "</ResourceCollectionContext>\n"
                          "<ResourceList resourceType=\"PhysicalElement\">\n");
}

// ---- streams that fail

TEST_F(Document, IsSwallowedByAFailedStream) {
    out.setstate(std::ios_base::failbit);
    EXPECT_TRUE(writer.WriteNamespace(collected));
    EXPECT_EQ(Text(), "");
}

/// Takes a number of bytes, then does as it is told.
class TLimitedBuffer final : public std::stringbuf {
  public:
    enum class EFailure { shortWrite, throwOnWrite, failOnFlush };

    TLimitedBuffer(std::size_t limit, EFailure failure) : limit_(limit), failure_(failure) {}

  protected:
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        if (failure_ != EFailure::failOnFlush && str().size() + static_cast<std::size_t>(count) > limit_) {
            if (failure_ == EFailure::throwOnWrite) {
                throw std::runtime_error("disk full");
            }
            return 0;
        }
        return std::stringbuf::xsputn(text, count);
    }
    int sync() override { return failure_ == EFailure::failOnFlush ? -1 : 0; }

  private:
    std::size_t limit_;
    EFailure failure_;
};

TEST_F(Document, EndsQuietlyWhereTheBufferTakesNoMore) {
    TLimitedBuffer buffer(40, TLimitedBuffer::EFailure::shortWrite);
    std::ostream stream(&buffer);
    EXPECT_TRUE(TNOXXMLWriterImpl(stream).WriteNamespace(collected));
    EXPECT_EQ(buffer.str(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    EXPECT_TRUE(stream.bad());
}

TEST_F(Document, EndsQuietlyWhereTheBufferThrows) {
    TLimitedBuffer buffer(40, TLimitedBuffer::EFailure::throwOnWrite);
    std::ostream stream(&buffer);
    EXPECT_TRUE(TNOXXMLWriterImpl(stream).WriteNamespace(collected));
    EXPECT_EQ(buffer.str(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    EXPECT_TRUE(stream.bad());
}

TEST_F(Document, EndsQuietlyWhereTheFlushFails) {
    TLimitedBuffer buffer(0, TLimitedBuffer::EFailure::failOnFlush);
    std::ostream stream(&buffer);
    EXPECT_TRUE(TNOXXMLWriterImpl(stream).WriteNamespace(collected));
    EXPECT_EQ(buffer.str(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    EXPECT_TRUE(stream.bad());
}

TEST_F(Document, PassesTheBuffersExceptionOnWhereTheStreamAsksForIt) {
    TLimitedBuffer buffer(40, TLimitedBuffer::EFailure::throwOnWrite);
    std::ostream stream(&buffer);
    stream.exceptions(std::ios_base::badbit);
    EXPECT_THAT([&] { TNOXXMLWriterImpl(stream).WriteNamespace(collected); },
                ThrowsMessage<std::runtime_error>("disk full"));
    EXPECT_TRUE(stream.bad());
}

TEST_F(Document, ThrowsTheStreamsFailureWhereTheStreamAsksForIt) {
    TLimitedBuffer buffer(40, TLimitedBuffer::EFailure::shortWrite);
    std::ostream stream(&buffer);
    stream.exceptions(std::ios_base::badbit);
    EXPECT_THROW(TNOXXMLWriterImpl(stream).WriteNamespace(collected), std::ios_base::failure);
}

TEST_F(Document, FlushesATiedStreamFirst) {
    TSpyBuffer tiedBuffer;
    std::ostream tied(&tiedBuffer);
    tied << "before";
    out.tie(&tied);
    writer.WriteResourceList("Other", collected);
    EXPECT_EQ(tiedBuffer.flushes.front(), "before");
}

// ---- the parts of the frame

TEST_F(Document, HasNoEffectFromTheMapOperations) {
    writer.InitMap();
    writer.DeInitMap();
    EXPECT_EQ(Text(), "");
}

TEST_F(Document, HasCriteriaForTheSystemInformation) {
    EXPECT_TRUE(writer.WriteResourceCollectionCriteria("NOXSystemInfo", "an<id>", collected));
    EXPECT_EQ(Text(),
              "<ResourceCollectionCriteria criteriaName=\"NOXSystemInfo\" criteriaId=\"an<id>\">\n"
              "<ResourceListCriteria resourceType=\"NOXSystemInfo\" />\n"
              "</ResourceCollectionCriteria>\n");
}

TEST_F(Document, HasNoCriteriaOfAnyOtherName) {
    for (const char* name : {"test", "", "noxSystemInfo", "NOXSYSTEMINFO", "NOXSystemInfo "}) {
        EXPECT_TRUE(writer.WriteResourceCollectionCriteria(name, "test", collected));
        EXPECT_EQ(Text(), "") << name;
    }
}

TEST_F(Document, HasNoStatusBlock) {
    EXPECT_TRUE(writer.WriteResourceCollectionStatus(collected));
    EXPECT_EQ(Text(), "");
}

TEST_F(Document, HasAFixedContextForTheSystemInformation) {
    EXPECT_TRUE(writer.WriteResourceCollectionContext("SystemInfo", nullptr));
    EXPECT_EQ(Text(),
              "<ResourceCollectionContext>\n"
              "<ResourceInstance resourceName=\"NOXSystemInfo_ContextName\""
              " resourceId=\"NOXSystemInfo_Context_ID_1\" resourceType=\"NOXSystemInfo_Type\">\n"
              "<Property name=\"NOXSystemInfo_Name\" type=\"string\">\n"
              "<Value>SystemInfo</Value>\n"
              "</Property>\n"
              "</ResourceInstance>\n"
              "</ResourceCollectionContext>\n");
}

TEST_F(Document, HasAnEmptyContextOfAnyOtherName) {
    for (const char* name : {"", "hardwareInventory", "Systeminfo", "NOXSystemInfo"}) {
        out.str("");
        EXPECT_TRUE(writer.WriteResourceCollectionContext(name, nullptr));
        EXPECT_EQ(Text(), "<ResourceCollectionContext>\n</ResourceCollectionContext>\n") << name;
    }
}

/// Sets the only property that identifies an instance of the class, to the class's name.
void AddKeyedInstance(TMemoryNamespace& collected, const std::string& className, const std::string& key) {
    const auto instance = collected.AddClass(className)->NewInstance();
    instance->Set(key, NKELVOR20::TCIMValue(className));
    instance->CommitInstance({});
}

/// The resource types of the instances in the text, in order.
std::vector<std::string> ListedTypes(const std::string& text) {
    std::vector<std::string> types;
    const std::string before = " resourceType=\"";
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("<ResourceInstance ")) {
            const std::size_t from = line.find(before) + before.size();
            types.push_back(line.substr(from, line.find('"', from) - from));
        }
    }
    return types;
}

TEST_F(Document, HasTheComputerAndItsSystemAsContext) {
    AddKeyedInstance(*collected, "KELSG_OperatingSystem", "ElementName");
    AddKeyedInstance(*collected, "KELSG_ComputerSystem", "Name");
    EXPECT_TRUE(writer.WriteResourceCollectionContext("HardwareInventory", collected));
    EXPECT_THAT(ListedTypes(Text()), ElementsAre("Server", "OperatingSystem"));
    EXPECT_THAT(Text(), StartsWith("<ResourceCollectionContext>\n<ResourceInstance "));
    EXPECT_THAT(Text(), testing::EndsWith("</ResourceInstance>\n</ResourceCollectionContext>\n"));
}

TEST_F(Document, ListsThreeTypesOfPhysicalElements) {
    for (const char* name : {"KELSG_Card", "KELSG_SPDData", "KELSG_SystemSlot"}) {
        AddKeyedInstance(*collected, name, "Tag");
    }
    AddKeyedInstance(*collected, "KELSG_Processor", "DeviceID");
    EXPECT_TRUE(writer.WriteResourceList("PhysicalElement", collected));
    EXPECT_THAT(ListedTypes(Text()), ElementsAre("Slot", "PhysicalMemory", "Card"));
}

TEST_F(Document, ListsTwentyClassesOfLogicalDevicesWithDvdDrivesAsDisketteDrives) {
    for (const char* name : {"KELSG_USBController",   "KELSG_PCIBridge",     "KELSG_PCIDevice",
                             "KELSG_VideoController", "KELSG_USBPort",       "KELSG_IDEProtocolController",
                             "KELSG_LogicalDisk",     "KELSG_srLogicalDisk", "KELSG_LSIIDELogicalDisk",
                             "KELSG_LSILogicalDisk",  "KELSG_MAS",           "KELSG_ACPI",
                             "CIM_DiskPartition",     "KELSG_DVDDrive",      "KELSG_CDROMDrive",
                             "KELSG_TapeDrive",       "KELSG_DisketteDrive", "CIM_DiskDrive",
                             "KELSG_DiskDrive",       "KELSG_Processor"}) {
        AddKeyedInstance(*collected, name, "DeviceID");
    }
    AddKeyedInstance(*collected, "KELSG_Card", "Tag");
    EXPECT_TRUE(writer.WriteResourceList("LogicalDevice", collected));
    EXPECT_THAT(
        ListedTypes(Text()),
        ElementsAre("Processor", "DiskDrive", "DiskDrive", "DisketteDrive", "TapeDrive", "OpticalDrive",
                    "DisketteDrive", "DiskPartition", "Memory", "Memory", "LogicalVolume", "LogicalVolume",
                    "LogicalVolume", "LogicalVolume", "IDEController", "USBPort", "DisplayController",
                    "PCIDevice", "PCIBridge", "USBController"));
}

TEST_F(Document, ListsNothingUnderAnyOtherType) {
    AddKeyedInstance(*collected, "KELSG_Card", "Tag");
    for (const std::string type : {"", "physicalElement", "LOGICALDEVICE", "Card", "a&b"}) {
        out.str("");
        EXPECT_TRUE(writer.WriteResourceList(type, collected));
        EXPECT_EQ(Text(), "<ResourceList resourceType=\"" + type + "\">\n</ResourceList>\n");
    }
}

TEST_F(Document, ListsCatalogueClassesThatNoListNamesNowhere) {
    AddKeyedInstance(*collected, "KELSG_Process", "ProcessID");
    AddKeyedInstance(*collected, "KELSG_IPProtocolEndpoint", "ElementName");
    AddKeyedInstance(*collected, "KELSG_srDiskGroup", "Tag");
    writer.WriteNamespace(collected);
    EXPECT_THAT(ListedTypes(Text()), testing::IsEmpty());
}

TEST_F(Document, ReleasesTheNamespace) {
    writer.WriteNamespace(collected);
    EXPECT_EQ(collected.use_count(), 1);
}

}  // namespace
