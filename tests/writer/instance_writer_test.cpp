#include "writer/instance_writer.h"

#include "host/vor_exception.h"
#include "tests/doubles/cim_doubles.h"
#include "tests/doubles/host_doubles.h"
#include "tests/writer/spy_buffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using NDOUBLES::TClassDouble;
using NDOUBLES::TInstanceDouble;
using NDOUBLES::TNamespaceDouble;
using NKELVOR20::TCIMValue;
using NKELVOR20::TVORException;
using testing::ElementsAre;
using testing::Property;
using testing::Throws;
using testing::ThrowsMessage;

class InstanceWriter : public testing::Test {
  protected:
    InstanceWriter() { NDOUBLES::ResetHost(); }

    std::string Written(const std::string& className = "KELSG_Processor") {
        text.str("");
        WriteInstances(out, className, "Processor", collected);
        return text.str();
    }

    boost::shared_ptr<TInstanceDouble> AddProcessor(const std::string& deviceId) {
        const auto instance = processors->AddInstance();
        instance->Add("DeviceID", deviceId);
        return instance;
    }

    boost::shared_ptr<TNamespaceDouble> collected = boost::make_shared<TNamespaceDouble>();
    boost::shared_ptr<TClassDouble> processors = collected->AddClass("KELSG_Processor");
    std::ostringstream text;
    TLineOutput out{text};
};

constexpr char cpu0[] =
    "<ResourceInstance resourceId=\"F0412DDD4EDFB7E918E1782A3245949C\" resourceType=\"Processor\">\n"
    "<Property name=\"ObjectType\" type=\"string\">\n"
    "<Value>Processor</Value>\n"
    "</Property>\n"
    "<Property name=\"DeviceID\" type=\"string\">\n"
    "<Value>CPU0</Value>\n"
    "</Property>\n"
    "</ResourceInstance>\n";

constexpr char cpu1[] =
    "<ResourceInstance resourceId=\"F2AC0BD10072D4CBC91A97A6FA562283\" resourceType=\"Processor\">\n"
    "<Property name=\"ObjectType\" type=\"string\">\n"
    "<Value>Processor</Value>\n"
    "</Property>\n"
    "<Property name=\"DeviceID\" type=\"string\">\n"
    "<Value>CPU1</Value>\n"
    "</Property>\n"
    "</ResourceInstance>\n";

TEST_F(InstanceWriter, WritesThePropertiesThatTheInstanceHasInCatalogueOrder) {
    const auto instance = AddProcessor("CPU0");
    instance->Add("ElementName", "CPU 1");
    instance->Add("Description", "A processor");
    instance->Add("MaxClockSpeed", TCIMValue(std::uint32_t{2300}));
    instance->Add("DataWidth", TCIMValue(std::uint16_t{64}));
    EXPECT_EQ(
        Written(),
        "<ResourceInstance resourceId=\"F0412DDD4EDFB7E918E1782A3245949C\" resourceType=\"Processor\">\n"
        "<Property name=\"Name\" type=\"string\">\n"
        "<Value>CPU 1</Value>\n"
        "</Property>\n"
        "<Property name=\"Description\" type=\"string\">\n"
        "<Value>A processor</Value>\n"
        "</Property>\n"
        "<Property name=\"ObjectType\" type=\"string\">\n"
        "<Value>Processor</Value>\n"
        "</Property>\n"
        "<Property name=\"DeviceID\" type=\"string\">\n"
        "<Value>CPU0</Value>\n"
        "</Property>\n"
        "<Property name=\"DataWidth\" type=\"unsignedShort\">\n"
        "<Value>64</Value>\n"
        "</Property>\n"
        "<Property name=\"MaxClockSpeed\" type=\"unsignedInt\">\n"
        "<Value>2300</Value>\n"
        "</Property>\n"
        "</ResourceInstance>\n");
}

TEST_F(InstanceWriter, SkipsPropertiesThatAreNullOrMissing) {
    AddProcessor("CPU0")->Add("Description", TCIMValue(TCIMValue::TCIMType(TCIMValue::TCIMType::eString)));
    EXPECT_EQ(Written(), cpu0);
}

TEST_F(InstanceWriter, WritesInstancesInEnumerationOrder) {
    AddProcessor("CPU1");
    AddProcessor("CPU0");
    EXPECT_EQ(Written(), std::string(cpu1) + cpu0);
}

TEST_F(InstanceWriter, WritesNothingForAClassWithoutInstances) {
    EXPECT_EQ(Written(), "");
}

TEST_F(InstanceWriter, WritesNothingForAClassOutsideTheCatalogue) {
    const auto fans = collected->AddClass("KELSG_Fan");
    fans->AddInstance()->Add("DeviceID", "F1");
    EXPECT_EQ(Written("KELSG_Fan"), "");
    EXPECT_THAT(fans->calls, ElementsAre("EnumerateInstances true"));
}

TEST_F(InstanceWriter, ComparesTheClassNameExactly) {
    const auto fans = collected->AddClass("kelsg_processor");
    fans->AddInstance()->Add("DeviceID", "CPU0");
    EXPECT_EQ(Written("kelsg_processor"), "");
}

TEST_F(InstanceWriter, WritesNothingForAClassThatTheNamespaceLacks) {
    EXPECT_EQ(Written("KELSG_Card"), "");
    EXPECT_THAT(collected->calls, ElementsAre("GetClass KELSG_Card"));
}

TEST_F(InstanceWriter, DoesNotEscapeTheResourceType) {
    AddProcessor("CPU0");
    WriteInstances(out, "KELSG_Processor", "A\"&B", collected);
    EXPECT_THAT(text.str(), testing::HasSubstr("\" resourceType=\"A\"&B\">\n"));
    EXPECT_THAT(text.str(), testing::HasSubstr("<Value>A\"&B</Value>\n"));
}

TEST_F(InstanceWriter, FlushesTheStreamOnceForEachLine) {
    TSpyBuffer buffer;
    std::ostream stream(&buffer);
    AddProcessor("CPU0");
    TLineOutput streamOut(stream);
    WriteInstances(streamOut, "KELSG_Processor", "Processor", collected);
    EXPECT_THAT(buffer.flushes,
                ElementsAre("<ResourceInstance resourceId=\"F0412DDD4EDFB7E918E1782A3245949C\""
                            " resourceType=\"Processor\">\n",
                            "<Property name=\"ObjectType\" type=\"string\">\n", "<Value>Processor</Value>\n",
                            "</Property>\n", "<Property name=\"DeviceID\" type=\"string\">\n",
                            "<Value>CPU0</Value>\n", "</Property>\n", "</ResourceInstance>\n"));
}

/// An exception that a host may derive from its own.
class TDetailedException : public TVORException {
  public:
    using TVORException::TVORException;
};

TEST_F(InstanceWriter, ThrowsAPlainTvorExceptionWithTheCodeOfAFailedClassLookup) {
    collected->before = [](const std::string&) { throw TDetailedException(2); };
    try {
        Written();
        FAIL() << "nothing was thrown";
    } catch (const TVORException& error) {
        EXPECT_EQ(error.GetStatusCode().GetCode(), 2);
        EXPECT_EQ(typeid(error), typeid(TVORException));
    }
    EXPECT_EQ(text.str(), "");
}

TEST_F(InstanceWriter, PassesOtherExceptionsOfTheClassLookupOn) {
    collected->before = [](const std::string&) { throw std::runtime_error("lookup"); };
    EXPECT_THAT([&] { Written(); }, ThrowsMessage<std::runtime_error>("lookup"));
}

TEST_F(InstanceWriter, PassesFailuresOfTheEnumerationOnEvenWithTheCodeOfAMissingClass) {
    processors->before = [](const std::string&) { throw TVORException(15); };
    EXPECT_THROW(Written(), TVORException);
    EXPECT_EQ(text.str(), "");
}

TEST_F(InstanceWriter, AssertsThatTheNamespaceHandleIsNotNull) {
    EXPECT_THAT([&] { WriteInstances(out, "KELSG_Processor", "Processor", nullptr); },
                ThrowsMessage<NDOUBLES::TAssertionFailed>("px != 0"));
}

TEST_F(InstanceWriter, AssertsThatTheClassHandleIsNotNull) {
    collected->classes["KELSG_Processor"] = nullptr;
    EXPECT_THAT([&] { Written(); }, ThrowsMessage<NDOUBLES::TAssertionFailed>("px != 0"));
}

TEST_F(InstanceWriter, LeavesTheElementOpenIfAPropertyThrows) {
    AddProcessor("CPU0")->before = [](const std::string& call) {
        if (call == "GetProperty Description") {
            throw std::runtime_error("lookup");
        }
    };
    EXPECT_THAT([&] { Written(); }, ThrowsMessage<std::runtime_error>("lookup"));
    EXPECT_EQ(text.str(),
              "<ResourceInstance resourceId=\"F0412DDD4EDFB7E918E1782A3245949C\""
              " resourceType=\"Processor\">\n");
}

TEST_F(InstanceWriter, LeavesTheStartOfTheOpeningTagIfTheIdentifierThrows) {
    // Exceptions of the instance are caught, but exceptions of the logger are not.
    processors->AddInstance();
    NDOUBLES::Host().onLog = [](int, const std::string&) { throw std::runtime_error("log"); };
    EXPECT_THAT([&] { Written(); }, ThrowsMessage<std::runtime_error>("log"));
    EXPECT_EQ(text.str(), "<ResourceInstance resourceId=\"");
}

TEST_F(InstanceWriter, LeavesTheModelOpenIfTheProductNameIsTooShort) {
    const auto system = collected->AddClass("KELSG_ComputerSystem")->AddInstance();
    system->Add("Name", "4C4C4544");
    system->Add("ProductName", "Server -[79]");
    EXPECT_THROW(WriteInstances(out, "KELSG_ComputerSystem", "Server", collected), std::out_of_range);
    EXPECT_EQ(text.str(),
              "<ResourceInstance resourceId=\"DF37BA3B2EAB4B2CFAE1056A19DAC73A\" resourceType=\"Server\">\n"
              "<Property name=\"Name\" type=\"string\">\n"
              "<Value>Debian GNU/Linux 12 (bookworm)</Value>\n"
              "</Property>\n"
              "<Property name=\"ObjectType\" type=\"string\">\n"
              "<Value>Server</Value>\n"
              "</Property>\n"
              "<Property name=\"MachineType\" type=\"string\">\n"
              "<Value>79]</Value>\n"
              "</Property>\n"
              "<Property name=\"Model\" type=\"string\">\n");
}

TEST_F(InstanceWriter, ReleasesEveryHandleIfAPropertyThrows) {
    const auto instance = AddProcessor("CPU0");
    instance->before = [](const std::string& call) {
        if (call == "GetProperty Description") {
            throw std::runtime_error("lookup");
        }
    };
    EXPECT_THROW(Written(), std::runtime_error);
    EXPECT_EQ(instance.use_count(), 2) << "one handle here, one in the class";
    EXPECT_EQ(processors.use_count(), 2) << "one handle here, one in the namespace";
    EXPECT_EQ(collected.use_count(), 1);
}

}  // namespace
