// `vorhost collect` on saved namespaces: documents, result, log, summary and every way to fail.

#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

const std::string smallServer = VORHOST_TEST_DATA "/small-server.xml";

// A run on the small server at a fixed time, without network.
std::vector<std::string> CollectArguments(std::vector<std::string> more = {}) {
    std::vector<std::string> arguments{
        "collect",        "--namespace", smallServer, "--local-time", "20240229134500.000000+060",
        "--reachability", "no"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

std::string EmptyCredentialReason(const std::string& summary) {
    const auto start = summary.find("Credential");
    return summary.substr(start, summary.find('\n', start) - start);
}

TEST(Collect, WritesTheHardwareDocumentOfTheNamespace) {
    const TTemporaryDirectory directory;
    const auto result = RunVorhost({CollectArguments(), directory.GetPath(), {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_EQ(ReadCompressedFile(directory / "hardwareinventory.xml.gz"),
              ReadFile(VORHOST_TEST_DATA "/small-server.hardware.xml"));
    EXPECT_FALSE(std::filesystem::exists(directory / "systeminformation.xml.gz"));
}

TEST(Collect, WritesTheSystemDocumentWhenAnIdentityIsGiven) {
    const TTemporaryDirectory directory;
    const auto result = RunVorhost({CollectArguments({"--kel-id", "K0000001"}), directory.GetPath(), {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_EQ(ReadCompressedFile(directory / "systeminformation.xml.gz"),
              ReadFile(VORHOST_TEST_DATA "/small-server.system.xml"));
}

TEST(Collect, TakesTheIdentityFromTheEnvironment) {
    const TTemporaryDirectory directory;
    const auto result = RunVorhost({CollectArguments(), directory.GetPath(), {{"ZETKELID", "K0000001"}}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_TRUE(std::filesystem::exists(directory / "systeminformation.xml.gz"));
}

TEST(Collect, TakesAnEmptyVariableForNoIdentity) {
    const TTemporaryDirectory directory;
    const auto result = RunVorhost({CollectArguments(), directory.GetPath(), {{"ZETKELID", ""}}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_FALSE(std::filesystem::exists(directory / "systeminformation.xml.gz"));
}

TEST(Collect, WritesToTheDirectoryAskedFor) {
    const TTemporaryDirectory start;
    const TTemporaryDirectory target;
    const auto result =
        RunVorhost({CollectArguments({"--directory", target.GetPath()}), start.GetPath(), {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_TRUE(std::filesystem::exists(target / "hardwareinventory.xml.gz"));
    EXPECT_TRUE(start.IsEmpty());
}

TEST(Collect, PathsOfTheCommandLineMeanTheStartingDirectory) {
    const TTemporaryDirectory start;
    std::filesystem::create_directory(start / "sub");
    const auto result = RunVorhost(
        {CollectArguments({"--directory", "sub", "--result", "result.xml", "--log-file", "run.log"}),
         start.GetPath(),
         {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_TRUE(std::filesystem::exists(start / "result.xml"));
    EXPECT_TRUE(std::filesystem::exists(start / "run.log"));
    EXPECT_TRUE(std::filesystem::exists(start / "sub/hardwareinventory.xml.gz"));
}

TEST(Collect, SummaryTellsMachineResourcesFilesCredentialAndTimes) {
    const TTemporaryDirectory directory;
    const auto result = RunVorhost({CollectArguments({"--kel-id", "K0000001"}), directory.GetPath(), {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(
        result.standardOutput,
        HasSubstr(
            "Machine     Example Computer Works Server -[1234AB5]-, type 1234, serial number EX4200042\n"));
    EXPECT_THAT(result.standardOutput, HasSubstr("Source      file " + smallServer + "\n"));
    EXPECT_THAT(
        result.standardOutput,
        HasSubstr("Collected   4 resources: 1 DisketteDrive, 1 OperatingSystem, 1 Processor, 1 Server\n"));
    EXPECT_THAT(result.standardOutput,
                ContainsRegex("Files       hardwareinventory.xml.gz, [0-9,]+ bytes\n"));
    EXPECT_THAT(result.standardOutput,
                ContainsRegex("            systeminformation.xml.gz, [0-9,]+ bytes\n"));
    EXPECT_THAT(result.standardOutput,
                ContainsRegex("Time        collect [0-9.]+ ms, load plug-in [0-9.]+ ms, request [0-9.]+ ms, "
                              "finish [0-9.]+ ms, total [0-9.]+ ms\n$"));
}

TEST(Collect, SummaryTellsWhyThereIsNoCredential) {
    const TTemporaryDirectory directory;
    EXPECT_EQ(EmptyCredentialReason(RunVorhost({CollectArguments(), directory.GetPath(), {}}).standardOutput),
              "Credential  none: no customer identity");
    EXPECT_EQ(EmptyCredentialReason(
                  RunVorhost({CollectArguments({"--kel-id", "K1"}), directory.GetPath(), {}}).standardOutput),
              "Credential  none: the web server cannot be reached");
}

TEST(Collect, CredentialOfAReachableHostIsANameBasedUuid) {
    const TTemporaryDirectory directory;
    auto arguments = CollectArguments({"--kel-id", "abc", "--result", "result.xml"});
    std::replace(arguments.begin(), arguments.end(), std::string("no"), std::string("yes"));
    const auto result = RunVorhost({arguments, directory.GetPath(), {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_EQ(EmptyCredentialReason(result.standardOutput), "Credential  obtained");
    // uuid5(NAMESPACE_URL, the five arguments joined by line feeds)
    EXPECT_THAT(ReadFile(directory / "result.xml"), HasSubstr("b7841704-7877-508e-b74d-7fb450e87ce8"));
}

TEST(Collect, ResultCarriesTheFileItsIdentityAndTheMachineTypeInThatOrder) {
    const TTemporaryDirectory directory;
    const auto result = RunVorhost(
        {CollectArguments({"--kel-id", "K0000001", "--result", "result.xml"}), directory.GetPath(), {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    const std::string text = ReadFile(directory / "result.xml");
    EXPECT_THAT(text, ContainsRegex("CLASSNAME=\"KELSG_CADAT\""));
    std::size_t place = 0;
    for (const char* property :
         {"NAME=\"InventoryRCF\"", "NAME=\"KELID\"", "NAME=\"MachineType\"", "NAME=\"Credential\""}) {
        const std::size_t next = text.find(property, place);
        ASSERT_NE(next, std::string::npos) << property;
        place = next;
    }
    EXPECT_THAT(text, HasSubstr("<VALUE>K0000001</VALUE>"));
    EXPECT_THAT(text, HasSubstr("<VALUE>1234</VALUE>"));
}

TEST(Collect, LogFileReceivesEveryLineWithItsLevel) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "run.log", "an earlier line\n");
    const auto result =
        RunVorhost({CollectArguments({"--kel-id", "K1", "--log-file", "run.log"}), directory.GetPath(), {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(ReadFile(directory / "run.log"),
              "an earlier line\n"
              "3 TNoxinfoPluginCallbacks debug output: Got kelid is:K1\n"
              "3 TNoxinfoPluginCallbacks debug output: Ready for system inventory!\n"
              "3 TNoxinfoPluginCallbacks debug output: Ready for hwinventory\n"
              "3 TNoxinfoPluginCallbacks debug output: There is no internet connection\n");
}

// The last line of the log of a run with these options.
std::string LastLogLine(std::vector<std::string> more) {
    const TTemporaryDirectory directory;
    std::vector<std::string> arguments{"collect", "--namespace", smallServer, "--log-file", "run.log"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const auto result = RunVorhost({arguments, directory.GetPath(), {}});
    EXPECT_EQ(result.status, 0) << result.standardError;
    const std::string log = ReadFile(directory / "run.log");
    return log.substr(log.rfind('\n', log.size() - 2) + 1);
}

TEST(Collect, LeavesTheNetworkAloneWithoutAnIdentity) {
    EXPECT_EQ(LastLogLine({}),
              "3 TNoxinfoPluginCallbacks debug output: kelID is empty, return credential as empty string!\n");
}

TEST(Collect, ProbesTheNetworkWithAnIdentityOrWhenAskedTo) {
    const std::string unreachable =
        "3 TNoxinfoPluginCallbacks debug output: There is no internet connection\n";
    EXPECT_EQ(LastLogLine({"--kel-id", "K1"}), unreachable);
    EXPECT_EQ(LastLogLine({"--reachability", "network"}), unreachable);
}

TEST(Collect, VerbosePrintsDebugLinesToStandardError) {
    const TTemporaryDirectory directory;
    const auto quiet = RunVorhost({CollectArguments(), directory.GetPath(), {}});
    EXPECT_EQ(quiet.standardError, "");
    const auto verbose = RunVorhost({CollectArguments({"--verbose"}), directory.GetPath(), {}});
    EXPECT_THAT(verbose.standardError,
                HasSubstr("3 TNoxinfoPluginCallbacks debug output: Ready for hwinventory\n"));
}

TEST(Collect, ANamespaceWithoutMachineTypeFailsAndWritesNothing) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "empty.xml",
              "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><DECLARATION><DECLGROUP/></DECLARATION></CIM>");
    const auto result = RunVorhost({{"collect", "--namespace", "empty.xml"}, directory.GetPath(), {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_EQ(result.standardError,
              "0 NOXINFO: Can not get machine type from CIM result\n"
              "vorhost: the plug-in made no result: NOXINFO: Can not get machine type from CIM result\n");
    EXPECT_FALSE(std::filesystem::exists(directory / "hardwareinventory.xml.gz"));
}

TEST(Collect, AMissingDirectoryFailsBeforeAnythingIsWritten) {
    const TTemporaryDirectory directory;
    const auto result = RunVorhost(
        {CollectArguments({"--directory", "absent", "--log-file", "run.log"}), directory.GetPath(), {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "vorhost: cannot write to directory absent: No such file or directory\n");
    EXPECT_TRUE(directory.IsEmpty());
}

TEST(Collect, AFileIsNoDirectoryToWriteTo) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "file", "");
    const auto result = RunVorhost({CollectArguments({"--directory", "file"}), directory.GetPath(), {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "vorhost: cannot write to directory file: not a directory\n");
}

TEST(Collect, AFileThatCannotBeReplacedFails) {
    const TTemporaryDirectory directory;
    std::filesystem::create_directory(directory / "hardwareinventory.xml.gz");
    const auto result = RunVorhost({CollectArguments(), directory.GetPath(), {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "vorhost: cannot write to hardwareinventory.xml.gz: Is a directory\n");
}

TEST(Collect, APlantedSymbolicLinkIsReplacedNotFollowed) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "victim", "precious");
    std::filesystem::create_symlink("victim", directory / "hardwareinventory.xml.gz");
    ASSERT_EQ(RunVorhost({CollectArguments(), directory.GetPath(), {}}).status, 0);
    EXPECT_EQ(ReadFile(directory / "victim"), "precious");
    EXPECT_FALSE(std::filesystem::is_symlink(directory / "hardwareinventory.xml.gz"));
}

TEST(Collect, LeavesNothingButTheInventory) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(RunVorhost({CollectArguments(), directory.GetPath(), {}}).status, 0);
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory.GetPath())) {
        names.push_back(entry.path().filename().string());
    }
    EXPECT_EQ(names, std::vector<std::string>{"hardwareinventory.xml.gz"});
}

TEST(Collect, RemovesWhatDeadRunsHaveLeft) {
    const TTemporaryDirectory directory;
    std::filesystem::create_directory(directory / ".vorhost-dead01");
    WriteFile(directory / ".vorhost-dead01/hardwareinventory.xml.gz", "half a file");
    ASSERT_EQ(RunVorhost({CollectArguments(), directory.GetPath(), {}}).status, 0);
    EXPECT_FALSE(std::filesystem::exists(directory / ".vorhost-dead01"));
}

TEST(Collect, InventoriesAreReadableByTheirOwnerAlone) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(RunVorhost({CollectArguments(), directory.GetPath(), {}}).status, 0);
    EXPECT_EQ(std::filesystem::status(directory / "hardwareinventory.xml.gz").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST(Collect, AFailedRunLeavesTheEarlierInventory) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "hardwareinventory.xml.gz", "earlier");
    WriteFile(directory / "empty.xml",
              "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><DECLARATION><DECLGROUP/></DECLARATION></CIM>");
    EXPECT_EQ(RunVorhost({{"collect", "--namespace", "empty.xml"}, directory.GetPath(), {}}).status, 1);
    EXPECT_EQ(ReadFile(directory / "hardwareinventory.xml.gz"), "earlier");
}

TEST(Collect, AMissingNamespaceFileFails) {
    const TTemporaryDirectory directory;
    const auto result = RunVorhost({{"collect", "--namespace", "absent.xml"}, directory.GetPath(), {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.standardError, HasSubstr("vorhost: absent.xml: "));
    EXPECT_THAT(result.standardError, HasSubstr("No such file or directory\n"));
    EXPECT_TRUE(directory.IsEmpty());
}

TEST(Collect, ABadNamespaceFileIsNamedWithLineClassAndProperty) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "bad.xml",
              "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><DECLARATION><DECLGROUP><VALUE.OBJECT>\n"
              "<INSTANCE CLASSNAME=\"KELSG_Processor\">\n"
              "<PROPERTY NAME=\"MaxClockSpeed\" TYPE=\"uint32\"><VALUE>4294967296</VALUE></PROPERTY>\n"
              "</INSTANCE></VALUE.OBJECT></DECLGROUP></DECLARATION></CIM>\n");
    const auto result = RunVorhost({{"collect", "--namespace", "bad.xml"}, directory.GetPath(), {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.standardError,
                HasSubstr("vorhost: bad.xml:3: class KELSG_Processor, property MaxClockSpeed: "));
    EXPECT_FALSE(std::filesystem::exists(directory / "hardwareinventory.xml.gz"));
}

TEST(Collect, AMissingSysrootFails) {
    const TTemporaryDirectory directory;
    const auto result = RunVorhost({{"collect", "--sysroot", "absent"}, directory.GetPath(), {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "vorhost: cannot collect from absent: not a directory\n");
}

TEST(Collect, AMissingPluginFails) {
    const TTemporaryDirectory directory;
    const auto result = RunVorhost({CollectArguments({"--plugin", "./absent.so"}), directory.GetPath(), {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.standardError, HasSubstr("./absent.so"));
    EXPECT_TRUE(directory.IsEmpty());
}

TEST(Collect, APluginGivenByItsFileIsRun) {
    const TTemporaryDirectory directory;
    const auto result = RunVorhost({CollectArguments({"--plugin", VORHOST_PLUGIN}), directory.GetPath(), {}});
    EXPECT_EQ(result.status, 0) << result.standardError;
}

TEST(Collect, AResultFileThatCannotBeWrittenFails) {
    const TTemporaryDirectory directory;
    const auto result =
        RunVorhost({CollectArguments({"--result", "absent/result.xml"}), directory.GetPath(), {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "vorhost: cannot write absent/result.xml: No such file or directory\n");
}

TEST(Collect, ALogFileThatCannotBeOpenedFails) {
    const TTemporaryDirectory directory;
    const auto result =
        RunVorhost({CollectArguments({"--log-file", "absent/run.log"}), directory.GetPath(), {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError,
              "vorhost: cannot append to log file absent/run.log: No such file or directory\n");
    EXPECT_TRUE(directory.IsEmpty());
}

TEST(Collect, RepeatedRunsGiveTheSameFiles) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(RunVorhost({CollectArguments(), directory.GetPath(), {}}).status, 0);
    const std::string first = ReadCompressedFile(directory / "hardwareinventory.xml.gz");
    ASSERT_EQ(RunVorhost({CollectArguments(), directory.GetPath(), {}}).status, 0);
    EXPECT_EQ(ReadCompressedFile(directory / "hardwareinventory.xml.gz"), first);
}

}  // namespace
}  // namespace NVORHOST
