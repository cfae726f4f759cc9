#include "tests/program/program_run.h"
#include "tests/program/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

TProgramResult RunFleet(const std::vector<std::string>& arguments) {
    return RunProgram(NOXINFO_FLEET, {arguments, "", {{"HOME", "/nonexistent"}}});
}

// Returns the error line; also checks the other properties of a usage error.
std::string RefusalOf(const std::vector<std::string>& arguments) {
    const auto result = RunFleet(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_THAT(result.standardError, StartsWith("noxinfo fleet: "));
    EXPECT_THAT(result.standardError, EndsWith(" --help'.\n"));
    const std::string line = result.standardError.substr(0, result.standardError.find('\n'));
    return line.substr(std::string("noxinfo fleet: ").size());
}

std::set<std::string> Options(const std::string& text, const char* pattern) {
    const std::regex option(pattern);
    std::set<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), option); match != std::sregex_iterator();
         ++match) {
        found.insert((*match)[1]);
    }
    return found;
}

const std::vector<std::string> commands{"load",    "machines", "show",    "history",    "where",  "outliers",
                                        "summary", "sql",      "changes", "stale",      "export", "prune",
                                        "report",  "merge",    "schema",  "completion", "help",   "version"};

TEST(FleetCommandLine, HelpListsEveryCommand) {
    const auto result = RunFleet({"--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(RunFleet({}).standardOutput, result.standardOutput);
    for (const std::string& command : commands) {
        EXPECT_THAT(result.standardOutput, HasSubstr("\n  " + command + " "));
        EXPECT_EQ(RunFleet({command, "--help"}).status, 0);
    }
}

TEST(FleetCommandLine, IsACommandOfNoxinfo) {
    EXPECT_EQ(RunNoxinfo({{"fleet", "--help"}, "", {}}).standardOutput, RunFleet({"--help"}).standardOutput);
    EXPECT_EQ(RunNoxinfo({{"help", "fleet"}, "", {}}).standardOutput, RunFleet({"--help"}).standardOutput);
    const auto result = RunNoxinfo({{"fleet", "--store", "sqlite:/missing", "machines"}, "", {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError,
              "noxinfo fleet: there is no fleet in /missing; noxinfo fleet load makes one\n");
}

TEST(FleetCommandLine, PrintsItsVersion) {
    EXPECT_EQ(RunFleet({"--version"}).standardOutput, "noxinfo-fleet " NOXINFO_VERSION "\n");
    EXPECT_EQ(RunFleet({"version"}).standardOutput, "noxinfo-fleet " NOXINFO_VERSION "\n");
}

TEST(FleetCommandLine, ReportsUsageErrors) {
    EXPECT_EQ(RefusalOf({"machine"}), "unknown command 'machine': did you mean machines?");
    EXPECT_EQ(RefusalOf({"changes"}), "--since is required");
    EXPECT_EQ(
        RefusalOf({"changes", "--since", "yesterday"}),
        "--since: 'yesterday' is not a date, a time such as 2026-03-01T04:00:00+01:00, or a span such as 7d");
    EXPECT_EQ(RefusalOf({"machines", "--where", "model"}),
              "--where: 'model' is not PROPERTY=VALUE or PROPERTY~EXPRESSION");
    EXPECT_EQ(RefusalOf({"prune", "--keep", "daily:0"}),
              "--keep: 'daily:0' has no number from 1 to 1000000 after the colon");
    EXPECT_EQ(
        RefusalOf({"export", "--format", "parquet"}),
        "--format: parquet is not supported, because Debian has no library for it; csv and ndjson can be "
        "converted");
    EXPECT_EQ(RefusalOf({"load", "--at", "7d"}),
              "option --at belongs to noxinfo fleet show, not to noxinfo fleet load");
}

TEST(FleetCommandLine, TakesTheStoreBeforeAndAfterTheCommand) {
    const std::string message =
        "noxinfo fleet: there is no fleet in /missing; noxinfo fleet load makes one\n";
    EXPECT_EQ(RunFleet({"--store", "sqlite:/missing", "machines"}).standardError, message);
    EXPECT_EQ(RunFleet({"--store=sqlite:/missing", "machines"}).standardError, message);
    EXPECT_EQ(RunFleet({"machines", "--store", "sqlite:/missing"}).standardError, message);
    EXPECT_EQ(RunFleet({"machines", "--store", "fleet.db"}).standardError,
              "noxinfo fleet: 'fleet.db' is not a store such as sqlite:fleet.sqlite or "
              "clickhouse://localhost:8123/fleet\n");
}

TEST(FleetCommandLine, CompletesEveryCommandInEveryShell) {
    for (const std::string shell : {"bash", "zsh", "fish"}) {
        const auto result = RunFleet({"completion", shell});
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.standardOutput, HasSubstr("printed by 'noxinfo-fleet completion"));
        EXPECT_THAT(result.standardOutput, HasSubstr("_noxinfo_fleet_commands"));
        EXPECT_THAT(result.standardOutput, HasSubstr("outliers"));
    }
}

TEST(FleetCommandLine, TheManualPageDescribesExactlyTheOptionsOfTheCommands) {
    std::set<std::string> known;
    for (const std::string& command : commands) {
        known.merge(Options(RunFleet({command, "--help"}).standardOutput, "(--[a-z][a-z-]+)"));
    }
    known.insert("--version");
    std::set<std::string> described;
    for (const std::string& name :
         Options(ReadFile(NOXINFO_MANUAL "/noxinfo-fleet.1"), "Fl -([a-z][a-z-]+)")) {
        described.insert("--" + name);
    }
    EXPECT_EQ(described, known);
}

}  // namespace
}  // namespace NVORHOST
