#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;

// A machine with a name, one processor and one process.
class TSmallTree {
  public:
    TSmallTree() {
        Add("proc/sys/kernel/hostname", "small\n");
        Add("proc/cpuinfo", "processor : 0\nphysical id : 0\nmodel name : Example CPU\n");
        Add("proc/stat", "btime 1700000000\n");
        Add("proc/17/stat", "17 (cron) S 1 17 17 0 -1 4194560 0 0 0 0 0 0 0 0 20 0 1 0 250 0 0\n");
    }
    const std::string& GetPath() const { return directory_.GetPath(); }
    void Add(const std::string& path, const std::string& text) {
        std::filesystem::create_directories(std::filesystem::path(directory_ / path).parent_path());
        WriteFile(directory_ / path, text);
    }

  private:
    TTemporaryDirectory directory_;
};

// Returns the namespace that a snapshot of the tree with these options saves.
std::string Snapshot(const TSmallTree& tree, std::vector<std::string> options) {
    std::vector<std::string> arguments{"snapshot", "--sysroot", tree.GetPath()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.emplace_back("-");
    const auto result = RunNoxinfo({arguments, "", {}});
    EXPECT_EQ(result.status, 0) << result.standardError;
    return result.standardOutput;
}

TEST(Collectors, AreListedWithTheirClassesAndSources) {
    const auto result = RunNoxinfo({{"collectors"}, "", {}});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standardError, "");
    EXPECT_THAT(result.standardOutput,
                StartsWith("computer-system: The machine: maker, product, serial number, identity\n"
                           "  fills KELSG_ComputerSystem\n"
                           "  reads /sys/firmware/dmi/tables/DMI\n"
                           "        /sys/firmware/dmi/tables/smbios_entry_point\n"));
    EXPECT_THAT(result.standardOutput,
                HasSubstr("\n\nprocess: What runs on the machine; only with --with-processes\n"
                          "  fills KELSG_Process\n"
                          "  reads /proc\n"
                          "        /proc/stat\n"
                          "        /proc/*/stat\n\n"));
}

TEST(Collectors, CollectProcessesOnlyOnRequest) {
    const TSmallTree tree;
    EXPECT_THAT(Snapshot(tree, {}), Not(HasSubstr("KELSG_Process\"")));
    const std::string asked = Snapshot(tree, {"--with-processes"});
    EXPECT_THAT(asked, HasSubstr("<INSTANCE CLASSNAME=\"KELSG_Process\">"));
    EXPECT_THAT(asked, HasSubstr("<INSTANCE CLASSNAME=\"KELSG_OperatingSystem\">"));
}

TEST(Collectors, CollectProcessesIfNamed) {
    const TSmallTree tree;
    EXPECT_THAT(Snapshot(tree, {"--only", "process"}),
                HasSubstr("<PROPERTY NAME=\"ProcessID\" TYPE=\"string\"><VALUE>17</VALUE></PROPERTY>"));
}

TEST(Collectors, RunOnlyIfNamedAndDeclareNoOtherClasses) {
    const TSmallTree tree;
    const std::string text = Snapshot(tree, {"--only", "processor,operating-system"});
    EXPECT_THAT(text, HasSubstr("KELSG_Processor\""));
    EXPECT_THAT(text, HasSubstr("KELSG_OperatingSystem\""));
    EXPECT_THAT(text, Not(HasSubstr("KELSG_ComputerSystem\"")));
    EXPECT_THAT(text, Not(HasSubstr("KELSG_CADAT\"")));
    EXPECT_EQ(Snapshot(tree, {"--only", "processor", "--only", "operating-system"}), text);
}

TEST(Collectors, DoNotRunIfBothNamedAndSkipped) {
    const TSmallTree tree;
    EXPECT_THAT(Snapshot(tree, {"--skip", "processor"}), Not(HasSubstr("KELSG_Processor\"")));
    EXPECT_THAT(Snapshot(tree, {"--skip", "processor"}), HasSubstr("KELSG_ComputerSystem\""));
    EXPECT_THAT(Snapshot(tree, {"--only", "processor,pci", "--skip", "processor"}),
                Not(HasSubstr("KELSG_Processor\"")));
}

TEST(Collectors, FillTheInventoryWithTheSelectedParts) {
    const TSmallTree tree;
    const TTemporaryDirectory directory;
    const auto result = RunNoxinfo({{"collect", "--sysroot", tree.GetPath(), "--reachability", "no", "--only",
                                     "computer-system,processor"},
                                    directory.GetPath(),
                                    {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr("Collected   2 resources: 1 Processor, 1 Server\n"));
}

TEST(Collectors, RequireTheComputerSystemForAnInventory) {
    const TSmallTree tree;
    const TTemporaryDirectory directory;
    const auto result = RunNoxinfo(
        {{"collect", "--sysroot", tree.GetPath(), "--reachability", "no", "--skip", "computer-system"},
         directory.GetPath(),
         {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.standardError,
                HasSubstr("Can not get machine type from CIM result; no computer system was collected, which "
                          "is required: --only must include computer-system, and --skip must not\n"));
    EXPECT_TRUE(directory.IsEmpty());
}

TEST(Collectors, RejectUnknownNamesAndListTheKnownOnes) {
    for (const std::string option : {"--only", "--skip"}) {
        const auto result = RunNoxinfo({{"snapshot", option, "pci,coffee-machine", "-"}, "", {}});
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.standardOutput, "");
        EXPECT_THAT(
            result.standardError,
            StartsWith(
                "noxinfo: " + option +
                ": unknown collector 'coffee-machine'; known are computer-system, operating-system, "));
        EXPECT_THAT(result.standardError, HasSubstr(", process, "));
        EXPECT_THAT(result.standardError, HasSubstr("\nTry 'noxinfo snapshot --help'.\n"));
    }
}

TEST(Collectors, CannotBeSelectedForASavedNamespace) {
    for (const std::vector<std::string>& option :
         {std::vector<std::string>{"--only", "pci"}, {"--skip", "pci"}, {"--with-processes"}}) {
        std::vector<std::string> arguments{"collect", "--namespace", "a.xml"};
        arguments.insert(arguments.end(), option.begin(), option.end());
        const auto result = RunNoxinfo({arguments, "", {}});
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.standardError, HasSubstr("excludes"));
    }
}

}  // namespace
}  // namespace NVORHOST
