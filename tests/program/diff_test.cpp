// `noxinfo diff`: its sources, outputs and exit statuses.
#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::string smallHardware = NOXINFO_TEST_DATA "/small-server.hardware.xml";

std::string Replace(std::string text, const std::string& from, const std::string& to) {
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return place == std::string::npos ? text : text.replace(place, from.size(), to);
}

class Diff : public testing::Test {
  protected:
    TProgramResult Run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "diff");
        return RunNoxinfo({arguments, folder_.GetPath(), {}});
    }

    TTemporaryDirectory folder_;
};

TEST_F(Diff, ExitsWithStatus0IfNothingDiffers) {
    const auto result = Run({smallHardware, smallHardware});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.standardOutput, HasSubstr("\nno changes\n"));
    EXPECT_EQ(result.standardError, "");
}

TEST_F(Diff, ExitsWithStatus1IfSomethingDiffers) {
    const std::string document = ReadFile(smallHardware);
    WriteFile(folder_ / "new.xml", Replace(document, "<Value>2500</Value>", "<Value>2600</Value>"));
    const auto result = Run({smallHardware, "new.xml", "--ignore", "Server"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.standardOutput, HasSubstr("\n1 change: 1 changed\n"));
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(Run({smallHardware, "new.xml", "--ignore", "Processor.MaxClockSpeed"}).status, 0);
}

TEST_F(Diff, ExitsWithStatus2ForTrouble) {
    const auto missing = Run({smallHardware, "missing.xml"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.standardOutput, "");
    EXPECT_EQ(missing.standardError, "noxinfo: missing.xml: cannot be read: No such file or directory\n");
    EXPECT_EQ(Run({"-", "-"}).standardError, "noxinfo: only one of the two sources can be standard input\n");
    EXPECT_EQ(Run({}).status, 2);
    EXPECT_EQ(Run({smallHardware, smallHardware, "--ignore", ".Name"}).standardError,
              "noxinfo: --ignore: '.Name' is not TYPE or TYPE.PROPERTY\nTry 'noxinfo diff --help'.\n");
}

TEST_F(Diff, ComparesWithThisMachineIfThereIsNoNewInventory) {
    const auto saved = RunNoxinfo({{"snapshot", "--only", "processor", "old.xml"}, folder_.GetPath(), {}});
    ASSERT_EQ(saved.status, 0) << saved.standardError;
    const auto result = Run({"old.xml", "--only", "processor"});
    EXPECT_THAT(result.status, AnyOf(0, 1)) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr("this machine"));
    EXPECT_EQ(Run({"old.xml", "old.xml", "--only", "processor"}).status, 2);
}

TEST_F(Diff, RejectsAFolderWithoutInventoryAndWithoutMachine) {
    std::filesystem::create_directory(folder_ / "empty");
    const auto result = Run({smallHardware, "empty"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standardError, "noxinfo: empty: holds no inventory\n");
}

TEST_F(Diff, WritesAFileOnlyIfBothSourcesCanBeRead) {
    EXPECT_EQ(Run({"--output", "diff.txt", smallHardware, "missing.xml"}).status, 2);
    EXPECT_TRUE(folder_.IsEmpty());
    const auto result = Run({"--output", "diff.txt", smallHardware, smallHardware});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_THAT(ReadFile(folder_ / "diff.txt"), StartsWith("old          "));
}

TEST_F(Diff, WritesJsonThatItsSchemaAccepts) {
    WriteFile(folder_ / "new.xml",
              Replace(ReadFile(smallHardware), "<Value>2500</Value>", "<Value>2600</Value>"));
    EXPECT_EQ(Run({smallHardware, "new.xml", "--format", "json", "--output", "a.json"}).status, 1);
    EXPECT_EQ(Run({smallHardware, "new.xml", "--format", "ndjson", "--output", "a.ndjson"}).status, 1);
    EXPECT_EQ(Run({smallHardware, smallHardware, "--format", "json", "--output", "same.json"}).status, 0);
    const auto result = RunProgram(
        NOXINFO_PYTHON, {{NOXINFO_CHECK_JSON, NOXINFO_DIFF_SCHEMA, "a.json", "a.ndjson", "same.json"},
                         folder_.GetPath(),
                         {}});
    EXPECT_EQ(result.status, 0) << result.standardOutput << result.standardError;
}

TEST_F(Diff, WritesAPage) {
    WriteFile(folder_ / "new.xml",
              Replace(ReadFile(smallHardware), "<Value>2500</Value>", "<Value>2600</Value>"));
    const auto result = Run({smallHardware, "new.xml", "--format", "html"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.standardOutput, StartsWith("<!DOCTYPE html>\n"));
    EXPECT_THAT(result.standardOutput, HasSubstr("<p class=\"lead\">1 change: 1 changed</p>\n"));
    EXPECT_THAT(result.standardOutput, HasSubstr("<td data-title=\"property\"><bdi>MaxClockSpeed</bdi></td>\n"
                                                 "<td data-title=\"before\"><bdi>2.5 GHz</bdi></td>\n"
                                                 "<td data-title=\"now\"><bdi>2.6 GHz</bdi></td>\n"));
    EXPECT_EQ(Run({smallHardware, smallHardware, "--format", "html"}).status, 0);
}

}  // namespace
}  // namespace NVORHOST
