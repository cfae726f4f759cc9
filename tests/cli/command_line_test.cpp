// What the program says to people who ask for help, and to those who ask for something it does not have.

#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

namespace NVORHOST {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

// The words of a text that look like long options.
std::set<std::string> LongOptions(const std::string& text, const char* pattern = "--[a-z][a-z-]+") {
    const std::regex option(pattern);
    std::set<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), option); match != std::sregex_iterator();
         ++match) {
        found.insert(match->str());
    }
    return found;
}

std::set<std::string> OptionsOfTheProgram() {
    std::string help;
    for (const auto& arguments : {std::vector<std::string>{"--help"},
                                  {"collect", "--help"},
                                  {"snapshot", "--help"},
                                  {"capture", "--help"},
                                  {"collectors", "--help"}}) {
        help += RunVorhost({arguments, "", {}}).standardOutput;
    }
    return LongOptions(help);
}

TEST(CommandLine, VersionNamesTheProgramAndItsVersion) {
    const auto result = RunVorhost({{"--version"}, "", {}});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standardOutput, "vorhost " NOXINFO_VERSION "\n");
    EXPECT_EQ(result.standardError, "");
}

TEST(CommandLine, HelpListsTheCommands) {
    const auto result = RunVorhost({{"--help"}, "", {}});
    EXPECT_EQ(result.status, 0);
    for (const char* command : {"\n  collect ", "\n  snapshot ", "\n  capture ", "\n  collectors "}) {
        EXPECT_THAT(result.standardOutput, HasSubstr(command));
    }
}

TEST(CommandLine, HelpOfCollectListsEveryOption) {
    const auto result = RunVorhost({{"collect", "--help"}, "", {}});
    EXPECT_EQ(result.status, 0);
    for (const char* option :
         {"--namespace", "--sysroot", "--directory", "--kel-id", "--local-time", "--reachability",
          "--entity-service", "--plugin", "--result", "--log-file", "--verbose"}) {
        EXPECT_THAT(result.standardOutput, HasSubstr(option));
    }
}

TEST(CommandLine, NoCommandIsWrongUsage) {
    const auto result = RunVorhost({{}, "", {}});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standardError, "vorhost: A subcommand is required\nTry 'vorhost --help'.\n");
}

TEST(CommandLine, UnknownOptionIsWrongUsageWithAHint) {
    const auto result = RunVorhost({{"collect", "--color"}, "", {}});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_EQ(result.standardError,
              "vorhost: The following argument was not expected: --color\nTry 'vorhost collect --help'.\n");
}

TEST(CommandLine, UnknownReachabilityIsWrongUsage) {
    const auto result = RunVorhost({{"collect", "--reachability", "maybe"}, "", {}});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(
        result.standardError,
        "vorhost: --reachability: 'maybe' is none of network, yes, no\nTry 'vorhost collect --help'.\n");
}

TEST(CommandLine, LocalTimeMustBeACimDateTime) {
    for (const char* time :
         {"now", "2024-02-29T13:45:00", "20241329134500.000000+060", "00000001000000.000000:000", ""}) {
        const auto result = RunVorhost({{"collect", "--local-time", time}, "", {}});
        EXPECT_EQ(result.status, 2) << time;
        EXPECT_THAT(result.standardError, StartsWith("vorhost: --local-time: '" + std::string(time) +
                                                     "' is no CIM date-time such as "
                                                     "20240229134500.000000+060\n"));
    }
}

TEST(CommandLine, NamespaceFileAndSysrootExcludeEachOther) {
    const auto result = RunVorhost({{"collect", "--namespace", "a.xml", "--sysroot", "/b"}, "", {}});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standardError,
              "vorhost: --namespace excludes --sysroot\nTry 'vorhost collect --help'.\n");
}

TEST(CommandLine, SnapshotNeedsAFile) {
    const auto result = RunVorhost({{"snapshot"}, "", {}});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standardError, "vorhost: file is required\nTry 'vorhost snapshot --help'.\n");
}

TEST(CommandLine, CompletionKnowsEveryOptionAndNoOther) {
    EXPECT_EQ(LongOptions(ReadFile(VORHOST_DOCS "/vorhost.bash-completion")), OptionsOfTheProgram());
}

TEST(CommandLine, ManualPageDescribesEveryOptionAndNoOther) {
    std::set<std::string> described;
    for (const std::string& option :
         LongOptions(ReadFile(VORHOST_DOCS "/vorhost.1.in"), "Fl -[a-z][a-z-]+")) {
        described.insert("-" + option.substr(3));
    }
    EXPECT_EQ(described, OptionsOfTheProgram());
}

}  // namespace
}  // namespace NVORHOST
