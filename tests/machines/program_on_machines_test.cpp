// Runs the program on every machine of this folder. Its output must depend only on the machine.
#include "machine_folder.h"
#include "tests/program/program_run.h"
#include "tests/program/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

using TEnvironment = std::map<std::string, std::string>;

std::string CollectDocuments(const std::string& sysroot, const TEnvironment& environment) {
    const TTemporaryDirectory directory;
    const auto result =
        RunNoxinfo({{"collect", "--sysroot", sysroot, "--local-time", "20240301120000.000000+060", "--kel-id",
                     "K0000001", "--reachability", "no"},
                    directory.GetPath(),
                    environment});
    EXPECT_EQ(result.status, 0) << result.standardError;
    return ReadFile(directory / "hardwareinventory.xml.gz") +
           ReadFile(directory / "systeminformation.xml.gz");
}

class TProgramOnMachineTest : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(Machine, TProgramOnMachineTest, testing::ValuesIn(ListMachines()),
                         [](const auto& value) {
                             std::string name = value.param;
                             std::ranges::replace(name, '-', '_');
                             return name;
                         });

TEST_P(TProgramOnMachineTest, WritesTheSameDocumentsForAnyOrderOfDirectoryEntries) {
    const TTemporaryDirectory directory;
    WriteMachine(ReadMachine(GetParam()), directory / "forwards", EEntryOrder::forwards);
    WriteMachine(ReadMachine(GetParam()), directory / "backwards", EEntryOrder::backwards);
    const std::string documents = CollectDocuments(directory / "forwards", {});
    EXPECT_GT(documents.size(), 1000U);
    EXPECT_EQ(CollectDocuments(directory / "backwards", {}), documents);
}

// Turkish has a different upper case of "i"; German has decimal commas. A locale that is not installed has no
// effect.
TEST_P(TProgramOnMachineTest, WritesTheSameDocumentsInEveryLocaleAndTimeZone) {
    const TTemporaryDirectory directory;
    WriteMachine(ReadMachine(GetParam()), directory / "machine", EEntryOrder::forwards);
    const std::string documents = CollectDocuments(directory / "machine", {{"LC_ALL", "C"}});
    for (const TEnvironment& environment : {TEnvironment{{"LC_ALL", "C.UTF-8"}},
                                            TEnvironment{{"LC_ALL", "de_DE.UTF-8"}, {"LANG", "de_DE.UTF-8"}},
                                            TEnvironment{{"LC_ALL", "tr_TR.UTF-8"}, {"LANGUAGE", "tr"}},
                                            TEnvironment{{"TZ", "Pacific/Chatham"}},
                                            TEnvironment{{"TZ", "XYZ-13:37"}, {"POSIXLY_CORRECT", "1"}}}) {
        EXPECT_EQ(CollectDocuments(directory / "machine", environment), documents)
            << environment.begin()->second;
    }
}

// Drops the capabilities that let root read every file.
TProgramResult RunAsOrdinaryUser(std::vector<std::string> arguments, const std::string& directory) {
    if (::geteuid() != 0) {
        return RunNoxinfo({std::move(arguments), directory, {}});
    }
    arguments.insert(arguments.begin(),
                     {"--bounding-set=-dac_override,-dac_read_search", "--inh-caps=-all", NOXINFO_PROGRAM});
    return RunProgram("setpriv", {std::move(arguments), directory, {}});
}

std::vector<std::string> LinesWith(std::string_view part, const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.find(part) != std::string::npos) {
            lines.push_back(line);
        }
    }
    return lines;
}

TEST(ProgramOnMachine, ShowsATreeThatIsNamedAsASource) {
    const TTemporaryDirectory directory;
    WriteMachine(ReadMachine("laptop-nvme-only"), directory / "machine", EEntryOrder::forwards);
    const std::string time = "20240301120000.000000+060";
    const auto named = RunNoxinfo({{"show", "--local-time", time, "machine"}, directory.GetPath(), {}});
    EXPECT_EQ(named.status, 0) << named.standardError;
    const auto root =
        RunNoxinfo({{"show", "--local-time", time, "--sysroot", "machine"}, directory.GetPath(), {}});
    EXPECT_THAT(root.standardOutput, HasSubstr("tree machine"));
    EXPECT_EQ(named.standardOutput, root.standardOutput);
}

TEST(ProgramOnMachine, ListsTheSourcesThatNeedRoot) {
    const TTemporaryDirectory directory;
    WriteMachine(ReadMachine("nvme-laptop"), directory / "machine", EEntryOrder::forwards);
    const auto result = RunAsOrdinaryUser(
        {"collect", "--sysroot", "machine", "--reachability", "no", "--log-file", "run.log"},
        directory.GetPath());
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(
        result.standardOutput,
        HasSubstr("\nDenied      4 sources need root: /sys/class/dmi/id/product_serial, "
                  "/sys/class/dmi/id/product_uuid, /sys/devices/system/cpu/cpu0/topology/ppin, ...\n"));
    EXPECT_THAT(LinesWith("permission denied", ReadFile(directory / "run.log")),
                UnorderedElementsAre(
                    "3 noxinfo-computer-system: permission denied: /sys/firmware/dmi/tables/DMI",
                    "3 noxinfo-computer-system: permission denied: /sys/class/dmi/id/product_serial",
                    "3 noxinfo-computer-system: permission denied: /sys/class/dmi/id/product_uuid",
                    "3 noxinfo-processor: permission denied: /sys/devices/system/cpu/cpu0/topology/ppin"));
}

TEST(ProgramOnMachine, WarnsAboutAMalformedFirmwareTable) {
    const TTemporaryDirectory directory;
    WriteMachine(ReadMachine("malformed-smbios"), directory / "machine", EEntryOrder::forwards);
    const auto result =
        RunNoxinfo({{"collect", "--sysroot", "machine", "--reachability", "no", "--log-file", "run.log"},
                    directory.GetPath(),
                    {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(
        result.standardOutput,
        HasSubstr("\nWarning     malformed SMBIOS table: byte 307 of 397, after 9 structures: a structure "
                  "is shorter than its header; 2 malformed places in all; 2 structures shorter than the "
                  "minimum length of the type\n"));
    EXPECT_THAT(LinesWith("malformed SMBIOS table", ReadFile(directory / "run.log")), testing::SizeIs(1));
}

TEST(ProgramOnMachine, CountsBytesThatAreNotValidUtf8) {
    const TTemporaryDirectory directory;
    TMachine machine = ReadMachine("container");
    machine.files.AddFile("/etc/os-release", "PRETTY_NAME=\"Caf\xE9 \xFF\xFE\"\n");
    WriteMachine(machine, directory / "machine", EEntryOrder::forwards);
    const auto result =
        RunNoxinfo({{"collect", "--sysroot", "machine", "--reachability", "no", "--log-file", "run.log"},
                    directory.GetPath(),
                    {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput,
                HasSubstr("\nReplaced    3 bytes of device text were not valid UTF-8\n"));
    EXPECT_THAT(
        LinesWith("UTF-8", ReadFile(directory / "run.log")),
        ElementsAre("3 noxinfo-operating-system: invalid UTF-8 in device text; bytes replaced by U+FFFD: 3"));
}

}  // namespace
}  // namespace NVORHOST
