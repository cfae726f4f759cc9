#include "host/vor_exception.h"
#include "tests/doubles/host_doubles.h"
#include "tests/plugin/plain_base64.h"
#include "tests/plugin/request_fixture.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <stdexcept>

namespace {

using NDOUBLES::TLogLine;
using NDOUBLES::TNamespacePtr;
using NKELVOR20::TVORException;
using NTEST::DebugLine;
using NTEST::hardwareFile;
using NTEST::ReadBytes;
using NTEST::systemFile;
using NTEST::Unzip;
using std::filesystem::exists;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::SizeIs;

using TDataRequest = NTEST::TRequestFixture;

TEST_F(TDataRequest, WritesTheHardwareDocumentAsAGzipFile) {
    Request();
    EXPECT_THAT(Unzip(hardwareFile), testing::HasSubstr("sda &lt;fast&gt;"));
    EXPECT_EQ(Unzip(hardwareFile), HardwareDocument());
}

TEST_F(TDataRequest, WritesTheNineLinesOfAnEmptyNamespace) {
    collected_ = boost::make_shared<NVORHOST::TMemoryNamespace>();
    Request();
    EXPECT_EQ(Unzip(hardwareFile),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<ResourceCollection xmlns=\"" NOXINFO_NAMESPACE_URI
              "\" timestamp= \"2009-03-07T14:05:09+01:00\">\n"
              "<ResourceCollectionContext>\n"
              "</ResourceCollectionContext>\n"
              "<ResourceList resourceType=\"PhysicalElement\">\n"
              "</ResourceList>\n"
              "<ResourceList resourceType=\"LogicalDevice\">\n"
              "</ResourceList>\n"
              "</ResourceCollection>\n");
}

TEST_F(TDataRequest, WritesTheSystemDocumentAsAGzipFile) {
    SetIdentity("4711");
    Request();
    EXPECT_THAT(Unzip(systemFile), testing::HasSubstr("<Value>SystemInfo</Value>"));
    EXPECT_EQ(Unzip(systemFile), SystemDocument());
    EXPECT_EQ(Unzip(hardwareFile), HardwareDocument());
}

TEST_F(TDataRequest, WritesOnlyTheHardwareFileWithoutAnIdentity) {
    Request();
    EXPECT_TRUE(exists(hardwareFile));
    EXPECT_FALSE(exists(systemFile));
}

TEST_F(TDataRequest, ReturnsAnEmptyIdentityAndCredentialWithoutAnIdentity) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    SetReachable("entity-4711");
    Request();
    EXPECT_THAT(PropertiesOfOnlyInstance(*resultClass), Contains(Pair("KELID", "")));
    EXPECT_THAT(PropertiesOfOnlyInstance(*resultClass), Contains(Pair("Credential", "")));
}

TEST_F(TDataRequest, WritesTheSystemFileBeforeTheHardwareFile) {
    SetIdentity("4711");
    bool systemFileWasComplete = false;
    bool hardwareFileWasThere = true;
    host_.onLog = [&](int, const std::string& message) {
        if (message == DebugLine("Ready for hwinventory").message) {
            systemFileWasComplete = !Unzip(systemFile).empty();
            hardwareFileWasThere = exists(hardwareFile);
        }
    };
    Request();
    EXPECT_TRUE(systemFileWasComplete);
    EXPECT_FALSE(hardwareFileWasThere);
}

TEST_F(TDataRequest, LogsEachStepWithoutAnIdentity) {
    AddResultClass("KELSG_CADAT");
    collected_ = boost::make_shared<NVORHOST::TMemoryNamespace>();
    SetReachable("");
    Request();
    EXPECT_THAT(host_.log, ElementsAre(DebugLine("Got kelid is:"), DebugLine("Ready for hwinventory"),
                                       DebugLine("kelID is empty, return credential as empty string!")));
}

TEST_F(TDataRequest, LogsEachStepWithAnIdentity) {
    AddResultClass("KELSG_CADAT");
    collected_ = boost::make_shared<NVORHOST::TMemoryNamespace>();
    SetIdentity("4711");
    Request();
    EXPECT_THAT(
        host_.log,
        ElementsAre(DebugLine("Got kelid is:4711"), DebugLine("Ready for system inventory!"),
                    DebugLine("Ready for hwinventory"), DebugLine("There is no internet connection")));
}

TEST_F(TDataRequest, ReadsTheIdentityFromOneVariableOnce) {
    Request();
    EXPECT_THAT(host_.environmentReads, ElementsAre("ZETKELID"));
}

TEST_F(TDataRequest, ReadsTheMachineTypeOfTheCollectedNamespace) {
    TNamespacePtr asked;
    host_.machineType = [&asked](const TNamespacePtr& collected) {
        asked = collected;
        return "8840";
    };
    Request();
    EXPECT_EQ(asked, collected_);
}

TEST_F(TDataRequest, ReturnsTheBytesOfTheHardwareFile) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    Request();
    const TProperties properties = PropertiesOfOnlyInstance(*resultClass);
    EXPECT_EQ(properties.front().first, "InventoryRCF");
    EXPECT_EQ(PlainBase64Decode(properties.front().second), ReadBytes(hardwareFile));
}

TEST_F(TDataRequest, SetsTheFourPropertiesInOrder) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    SetIdentity("4711");
    SetReachable("entity-4711");
    Request();
    EXPECT_THAT(
        PropertiesOfOnlyInstance(*resultClass),
        ElementsAre(Pair("InventoryRCF", PlainBase64Encode(ReadBytes(hardwareFile))), Pair("KELID", "4711"),
                    Pair("MachineType", "8840"), Pair("Credential", "entity-4711")));
}

TEST_F(TDataRequest, AcceptsAnEmptyMachineType) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    host_.machineType = [](const TNamespacePtr&) { return ""; };
    Request();
    EXPECT_TRUE(exists(hardwareFile));
    EXPECT_THAT(PropertiesOfOnlyInstance(*resultClass), Contains(Pair("MachineType", "")));
}

TEST_F(TDataRequest, AddsAnInstanceToEachResultClass) {
    const auto first = AddResultClass("KELSG_CADAT");
    const auto second = AddResultClass("KELSG_CADAT");
    SetReachable("entity-4711");
    SetIdentity("4711");
    Request();
    EXPECT_THAT(PropertiesOfOnlyInstance(*first), SizeIs(4));
    EXPECT_EQ(PropertiesOfOnlyInstance(*first), PropertiesOfOnlyInstance(*second));
}

TEST_F(TDataRequest, RequestsACredentialForEachResultClass) {
    AddResultClass("KELSG_CADAT");
    AddResultClass("KELSG_CADAT");
    SetReachable("entity-4711");
    SetIdentity("4711");
    Request();
    EXPECT_THAT(host_.probes, SizeIs(2));
    EXPECT_THAT(host_.entityRequests, SizeIs(2));
}

TEST_F(TDataRequest, SkipsClassesOfOtherNames) {
    const auto lowerCase = AddResultClass("kelsg_cadat");
    const auto longer = AddResultClass("KELSG_CADAT2");
    const auto shorter = AddResultClass("KELSG_CADA");
    const auto match = AddResultClass("KELSG_CADAT");
    Request();
    EXPECT_THAT(lowerCase->GetInstances(), IsEmpty());
    EXPECT_THAT(longer->GetInstances(), IsEmpty());
    EXPECT_THAT(shorter->GetInstances(), IsEmpty());
    EXPECT_THAT(match->GetInstances(), SizeIs(1));
}

TEST_F(TDataRequest, WritesTheFilesWithoutAResultClass) {
    SetIdentity("4711");
    Request();
    EXPECT_TRUE(exists(systemFile));
    EXPECT_TRUE(exists(hardwareFile));
    EXPECT_THAT(host_.probes, IsEmpty());
}

TEST_F(TDataRequest, DoesNotChangeTheListOfClasses) {
    AddResultClass("KELSG_Other");
    AddResultClass("KELSG_CADAT");
    AddResultClass("KELSG_CADAT");
    const std::vector<TClassPtr> before = resultClasses_;
    Request();
    EXPECT_EQ(resultClasses_, before);
}

TEST_F(TDataRequest, IsIndependentOfEarlierRequests) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    Request();
    const std::string firstBytes = ReadBytes(hardwareFile);
    collected_->FindClass("KELSG_DiskDrive")->NewInstance()->CommitInstance({});
    Request();
    ASSERT_THAT(resultClass->GetInstances(), SizeIs(2));
    EXPECT_EQ(Unzip(hardwareFile), HardwareDocument());
    EXPECT_NE(ReadBytes(hardwareFile), firstBytes);
    EXPECT_EQ(PropertiesOf(*resultClass->GetInstances()[1]).front().second,
              PlainBase64Encode(ReadBytes(hardwareFile)));
}

TEST_F(TDataRequest, ReleasesTheNamespace) {
    Request();
    EXPECT_EQ(collected_.use_count(), 1);
}

TEST_F(TDataRequest, ReturnsDocumentsLargerThanEveryBuffer) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    const auto disks = collected_->FindClass("KELSG_DiskDrive");
    for (int number = 0; number < 2000; ++number) {
        const auto disk = disks->NewInstance();
        disk->Set("DeviceID", NKELVOR20::TCIMValue("disk " + std::to_string(number * 7919)));
        disk->CommitInstance({});
    }
    Request();
    EXPECT_GT(ReadBytes(hardwareFile).size(), 3U * 8192);
    EXPECT_EQ(Unzip(hardwareFile), HardwareDocument());
    EXPECT_EQ(PlainBase64Decode(PropertiesOfOnlyInstance(*resultClass).front().second),
              ReadBytes(hardwareFile));
}

TEST_F(TDataRequest, EndsWithoutAMachineType) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    SetIdentity("4711");
    host_.machineType = [](const TNamespacePtr&) -> std::string { throw TVORException(17); };
    Request();
    EXPECT_TRUE(directory_.IsEmpty());
    EXPECT_THAT(resultClass->GetInstances(), IsEmpty());
    EXPECT_THAT(host_.environmentReads, IsEmpty());
    EXPECT_THAT(host_.log, ElementsAre(TLogLine{0, "NOXINFO: Can not get machine type from CIM result"}));
}

TEST_F(TDataRequest, EndsWithoutAMachineTypeForAnExceptionOfAnyType) {
    host_.machineType = [](const TNamespacePtr&) -> std::string { throw 42; };
    Request();
    EXPECT_TRUE(directory_.IsEmpty());
    EXPECT_THAT(host_.log, ElementsAre(TLogLine{0, "NOXINFO: Can not get machine type from CIM result"}));
}

TEST_F(TDataRequest, ContinuesWithoutAnIdentityIfItCannotBeRead) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    collected_ = boost::make_shared<NVORHOST::TMemoryNamespace>();
    host_.environment = [](const std::string&) -> std::string { throw TVORException(1); };
    Request();
    EXPECT_FALSE(exists(systemFile));
    EXPECT_TRUE(exists(hardwareFile));
    EXPECT_THAT(PropertiesOfOnlyInstance(*resultClass), Contains(Pair("KELID", "")));
    EXPECT_THAT(host_.log, ElementsAre(DebugLine("When get ZETKELID, a problem happened."),
                                       DebugLine("Ready for hwinventory"),
                                       DebugLine("There is no internet connection")));
}

TEST_F(TDataRequest, ContinuesWithoutAnIdentityForAnExceptionOfAnyType) {
    host_.environment = [](const std::string&) -> std::string { throw 42; };
    Request();
    EXPECT_THAT(host_.log, Contains(DebugLine("When get ZETKELID, a problem happened.")));
    EXPECT_TRUE(exists(hardwareFile));
}

TEST_F(TDataRequest, ThrowsCode11IfTheDirectoryWasRemoved) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    directory_.Remove();
    EXPECT_EQ(RequestFailure(), 11);
    EXPECT_THAT(resultClass->GetInstances(), IsEmpty());
    EXPECT_THAT(host_.probes, IsEmpty());
}

TEST_F(TDataRequest, ThrowsCode11IfTheSystemFileCannotBeCreated) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    SetIdentity("4711");
    std::filesystem::create_directory(systemFile);
    EXPECT_EQ(RequestFailure(), 11);
    EXPECT_FALSE(exists(hardwareFile));
    EXPECT_THAT(resultClass->GetInstances(), IsEmpty());
    EXPECT_THAT(host_.log, Not(Contains(DebugLine("Ready for hwinventory"))));
}

TEST_F(TDataRequest, KeepsTheSystemFileIfTheHardwareFileCannotBeCreated) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    SetIdentity("4711");
    std::filesystem::create_directory(hardwareFile);
    EXPECT_EQ(RequestFailure(), 11);
    EXPECT_EQ(Unzip(systemFile), SystemDocument());
    EXPECT_THAT(resultClass->GetInstances(), IsEmpty());
}

TEST_F(TDataRequest, ThrowsAnExceptionWithTheHostsTextForTheCode) {
    std::filesystem::create_directory(hardwareFile);
    try {
        Request();
        FAIL() << "nothing was thrown";
    } catch (const std::exception& failure) {
        EXPECT_EQ(
            failure.what(),
            NKELVOR20::TVORStatusCode(NKELVOR20::TVORStatusCode::cannotCreateFile).TranslateStatusCode());
    }
}

TEST_F(TDataRequest, AssertsThatAClassIsNotNullAfterServingTheClassesBeforeIt) {
    const auto before = AddResultClass("KELSG_CADAT");
    resultClasses_.push_back(nullptr);
    const auto after = AddResultClass("KELSG_CADAT");
    try {
        Request();
        FAIL() << "nothing was thrown";
    } catch (const NDOUBLES::TAssertionFailed& failed) {
        EXPECT_STREQ(failed.what(), "px != 0");
    }
    EXPECT_TRUE(exists(hardwareFile));
    EXPECT_THAT(before->GetInstances(), SizeIs(1));
    EXPECT_THAT(after->GetInstances(), IsEmpty());
}

TEST_F(TDataRequest, AssertsThatTheNamespaceIsNotNull) {
    collected_ = nullptr;
    EXPECT_THROW(Request(), NDOUBLES::TAssertionFailed);
    EXPECT_TRUE(directory_.IsEmpty());
}

// Throws while the writer reads it.
class TFailingNamespace final : public NKELVOR20::ICIMNamespace {
  public:
    boost::shared_ptr<NKELVOR20::ICIMClass> GetClass(const std::string&, NKELVOR20::TOptionsMap) override {
        throw TVORException(NKELVOR20::TVORStatusCode::accessDenied);
    }
};

TEST_F(TDataRequest, PassesAnExceptionOfTheWriterOnBeforeItCreatesTheFile) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    try {
        plugin_->GetData(boost::make_shared<TFailingNamespace>(), resultClasses_);
        FAIL() << "nothing was thrown";
    } catch (const TVORException& failure) {
        EXPECT_EQ(failure.GetStatusCode().GetCode(), 2);
    }
    EXPECT_TRUE(directory_.IsEmpty());
    EXPECT_THAT(resultClass->GetInstances(), IsEmpty());
}

TEST_F(TDataRequest, PassesAnExceptionOfTheCredentialOnBeforeTheCommit) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    host_.hostnameAvailable = [](const std::string&, const std::string&) -> int {
        throw std::runtime_error("no resolver");
    };
    EXPECT_THROW(Request(), std::runtime_error);
    EXPECT_THAT(resultClass->GetInstances(), IsEmpty());
}

}  // namespace
