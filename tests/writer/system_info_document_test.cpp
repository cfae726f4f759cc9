#include "writer/system_info_document.h"

#include "host/vor_exception.h"
#include "tests/doubles/cim_doubles.h"
#include "tests/doubles/host_doubles.h"
#include "tests/writer/spy_buffer.h"
#include "vorhost/model/memory_namespace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using NDOUBLES::Host;
using NDOUBLES::TNamespaceDouble;
using NKELVOR20::TCIMValue;
using NKELVOR20::TVORException;
using NVORHOST::TMemoryNamespace;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class SystemInfoDocument : public testing::Test {
  protected:
    SystemInfoDocument() { NDOUBLES::ResetHost(); }

    void AddComputer(const std::string& manufacturer) {
        auto computers = collected->FindClass("KELSG_ComputerSystem");
        if (!computers) {
            computers = collected->AddClass("KELSG_ComputerSystem");
        }
        const auto computer = computers->NewInstance();
        computer->Set("Manufacturer", TCIMValue(manufacturer));
        computer->CommitInstance({});
    }

    std::string List() {
        WriteSystemInfoList(out, "NOXSystemInfo", collected);
        return text.str();
    }

    boost::shared_ptr<TMemoryNamespace> collected = boost::make_shared<TMemoryNamespace>();
    std::ostringstream text;
    TLineOutput out{text};
};

std::string WithValue(const std::string& name, const std::string& value) {
    return "<Property name=\"" + name + "\" type=\"string\">\n<Value>" + value + "</Value>\n</Property>\n";
}

std::string WithoutValue(const std::string& name) {
    return "<Property name=\"" + name + "\" type=\"string\">\n</Property>\n";
}

/// A service that throws. Assignable to any service that returns a string.
struct TThrows {
    template <typename... TArguments>
    [[noreturn]] std::string operator()(const TArguments&...) const {
        throw TVORException(16);
    }
};

TEST_F(SystemInfoDocument, DescribesTheMachineInOneInstance) {
    AddComputer("Kessel");
    WriteSystemInfoDocument(out, collected);
    EXPECT_EQ(text.str(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<ResourceCollection xmlns=\"" NOXINFO_NAMESPACE_URI
              "\" timestamp=\"2009-03-07T14:05:09+01:00\">\n"
              "<ResourceCollectionCriteria criteriaName=\"NOXSystemInfo\""
              " criteriaId=\"default.NOXSystemInfo\">\n"
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
              "<ResourceList resourceType=\"NOXSystemInfo\">\n"
              "<ResourceInstance resourceId=\"C57B0B5A13238E94CCD610F7A0F75442\""
              " resourceName=\"Kessel,8840-21X-KQ12345\" resourceType=\"NOXSystemInfo\">\n" +
                  WithValue("Manufacturer", "Kessel") + WithValue("MachineType", "8840") +
                  WithValue("Model", "21X") + WithValue("SerialNumber", "KQ12345") +
                  WithValue("OSType", "linux") + WithValue("OSName", "Linux") +
                  WithValue("OSVersion", "6.1.0") + WithValue("SystemName", "vega") +
                  WithValue("HostName", "vega") + WithValue("NoxVersion", "1.0.0") +
                  WithValue("ProductName", "KEL Vorcheck") +
                  "</ResourceInstance>\n"
                  "</ResourceList>\n"
                  "</ResourceCollection>\n");
    EXPECT_THAT(Host().log, IsEmpty());
}

TEST_F(SystemInfoDocument, ReadsTheTimeBeforeItWritesAnything) {
    Host().localTime = []() -> NKELVOR20::TCIMDateTime { throw std::runtime_error("clock"); };
    EXPECT_THROW(WriteSystemInfoDocument(out, collected), std::runtime_error);
    EXPECT_EQ(text.str(), "");
}

TEST_F(SystemInfoDocument, IsCompleteIfEverySourceFails) {
    Host().machineType = TThrows();
    Host().modelNumber = TThrows();
    Host().serialNumber = TThrows();
    Host().osType = [](const auto&) -> unsigned short { throw std::runtime_error("type"); };
    Host().osVersion = TThrows();
    Host().machineName = TThrows();
    Host().dataSourceVersion = TThrows();
    EXPECT_EQ(List(),
              "<ResourceList resourceType=\"NOXSystemInfo\">\n"
              "<ResourceInstance resourceId=\"E6D061A4468BFC734C968C8B1967AB51\" resourceName=\",--\""
              " resourceType=\"NOXSystemInfo\">\n" +
                  WithoutValue("Manufacturer") + WithoutValue("MachineType") + WithoutValue("Model") +
                  WithoutValue("SerialNumber") + WithValue("OSType", "other") + WithValue("OSName", "Other") +
                  WithoutValue("OSVersion") + WithoutValue("SystemName") + WithoutValue("HostName") +
                  WithoutValue("NoxVersion") + WithValue("ProductName", "KEL Vorcheck") +
                  "</ResourceInstance>\n"
                  "</ResourceList>\n");
    EXPECT_THAT(Host().log, IsEmpty());
}

TEST_F(SystemInfoDocument, KeepsTheOtherValuesIfOneSourceFails) {
    AddComputer("Kessel");
    Host().modelNumber = TThrows();
    const std::string list = List();
    EXPECT_THAT(list, HasSubstr(" resourceName=\"Kessel,8840--KQ12345\" "));
    EXPECT_THAT(list, HasSubstr(WithoutValue("Model") + WithValue("SerialNumber", "KQ12345")));
}

TEST_F(SystemInfoDocument, TreatsAnythingThatASourceThrowsAsAFailure) {
    Host().serialNumber = [](const auto&) -> std::string { throw 42; };
    EXPECT_THAT(List(), HasSubstr(WithoutValue("SerialNumber")));
}

TEST_F(SystemInfoDocument, ReadsItsSourcesInAFixedOrder) {
    std::vector<std::string> asked;
    const auto answering = [&](const char* source) {
        return [&asked, source](const auto&...) {
            asked.emplace_back(source);
            return std::string();
        };
    };
    const auto spy = boost::make_shared<TNamespaceDouble>();
    spy->before = [&](const std::string& call) { asked.push_back(call); };
    Host().machineType = answering("machine type");
    Host().modelNumber = answering("model");
    Host().serialNumber = answering("serial number");
    Host().osType = [&](const auto&) {
        asked.emplace_back("OS type");
        return static_cast<unsigned short>(36);
    };
    Host().osVersion = answering("OS version");
    Host().machineName = answering("machine name");
    Host().dataSourceVersion = answering("data source version");
    WriteSystemInfoList(out, "NOXSystemInfo", spy);
    EXPECT_THAT(
        asked, testing::ElementsAre("GetClass KELSG_ComputerSystem", "machine type", "model", "serial number",
                                    "OS type", "OS version", "machine name", "data source version"));
}

TEST_F(SystemInfoDocument, PassesTheNamespaceToTheSchemaHelper) {
    boost::shared_ptr<NKELVOR20::ICIMNamespace> seen;
    Host().machineType = [&](const auto& asked) {
        seen = asked;
        return std::string();
    };
    List();
    EXPECT_EQ(seen, collected);
}

TEST_F(SystemInfoDocument, UsesTheMachineNameForSystemAndHost) {
    Host().machineName = [] { return "altair"; };
    EXPECT_THAT(List(), HasSubstr(WithValue("SystemName", "altair") + WithValue("HostName", "altair")));
}

TEST_F(SystemInfoDocument, WritesValuesUnescaped) {
    AddComputer("Kite & \"Sons\" <Ltd>");
    const std::string list = List();
    EXPECT_THAT(list, HasSubstr(" resourceName=\"Kite & \"Sons\" <Ltd>,8840-21X-KQ12345\" "));
    EXPECT_THAT(list, HasSubstr(WithValue("Manufacturer", "Kite & \"Sons\" <Ltd>")));
}

TEST_F(SystemInfoDocument, ListHasTheGivenResourceType) {
    WriteSystemInfoList(out, "T", collected);
    EXPECT_THAT(text.str(), testing::StartsWith("<ResourceList resourceType=\"T\">\n<ResourceInstance "));
    EXPECT_THAT(text.str(), HasSubstr("\" resourceType=\"T\">\n<Property "));
}

TEST_F(SystemInfoDocument, ListIsFlushedOnceForEachLine) {
    TSpyBuffer buffer;
    std::ostream stream(&buffer);
    AddComputer("Kessel");
    TLineOutput streamOut(stream);
    WriteSystemInfoList(streamOut, "NOXSystemInfo", collected);
    EXPECT_EQ(buffer.flushes.size(), 37U);
    EXPECT_EQ(buffer.flushes[1],
              "<ResourceInstance resourceId=\"C57B0B5A13238E94CCD610F7A0F75442\""
              " resourceName=\"Kessel,8840-21X-KQ12345\" resourceType=\"NOXSystemInfo\">\n");
}

TEST_F(SystemInfoDocument, PropertyHasItsValueOnALineOfItsOwn) {
    WriteSystemInfoProperty(out, "N", "v", "t");
    EXPECT_EQ(text.str(), "<Property name=\"N\" type=\"t\">\n<Value>v</Value>\n</Property>\n");
}

TEST_F(SystemInfoDocument, PropertyWithAnEmptyValueHasNoValueElement) {
    WriteSystemInfoProperty(out, "N", "", "t");
    EXPECT_EQ(text.str(), "<Property name=\"N\" type=\"t\">\n</Property>\n");
}

TEST_F(SystemInfoDocument, ManufacturerComesFromTheOnlyComputer) {
    AddComputer("Kessel");
    EXPECT_EQ(GetManufacturer(collected), "Kessel");
}

int CodeOf(const boost::shared_ptr<NKELVOR20::ICIMNamespace>& collected) {
    try {
        GetManufacturer(collected);
    } catch (const TVORException& error) {
        return error.GetStatusCode().GetCode();
    }
    return 0;
}

TEST_F(SystemInfoDocument, ManufacturerThrowsForNoComputer) {
    collected->AddClass("KELSG_ComputerSystem");
    EXPECT_EQ(CodeOf(collected), 15);
}

TEST_F(SystemInfoDocument, ManufacturerThrowsForTwoComputers) {
    AddComputer("Kessel");
    AddComputer("Kessel");
    EXPECT_EQ(CodeOf(collected), 15);
    EXPECT_THAT(List(), HasSubstr(" resourceName=\",8840-21X-KQ12345\" "));
    EXPECT_THAT(text.str(), HasSubstr(WithoutValue("Manufacturer")));
}

TEST_F(SystemInfoDocument, ManufacturerPassesFailuresOfTheHostOn) {
    EXPECT_EQ(CodeOf(collected), 15) << "no class";
    collected->AddClass("KELSG_ComputerSystem")->NewInstance()->CommitInstance({});
    EXPECT_EQ(CodeOf(collected), 16) << "no property";
}

TEST_F(SystemInfoDocument, ManufacturerThrowsTypeMismatchForANumber) {
    const auto computer = collected->AddClass("KELSG_ComputerSystem")->NewInstance();
    computer->Set("Manufacturer", TCIMValue(std::uint8_t{1}));
    computer->CommitInstance({});
    EXPECT_EQ(CodeOf(collected), 9);
    EXPECT_THAT(List(), HasSubstr(WithoutValue("Manufacturer")));
}

TEST_F(SystemInfoDocument, ManufacturerAssertsThatItsHandlesAreNotNull) {
    EXPECT_THROW(GetManufacturer(nullptr), NDOUBLES::TAssertionFailed);
    const auto empty = boost::make_shared<TNamespaceDouble>();
    empty->classes["KELSG_ComputerSystem"] = nullptr;
    EXPECT_THROW(GetManufacturer(empty), NDOUBLES::TAssertionFailed);
    const auto computer = empty->AddClass("KELSG_ComputerSystem")->AddInstance();
    computer->properties["Manufacturer"] = nullptr;
    EXPECT_THROW(GetManufacturer(empty), NDOUBLES::TAssertionFailed);
}

}  // namespace
