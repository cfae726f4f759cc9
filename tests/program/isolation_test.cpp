#include "program_run.h"
#include "temporary_directory.h"
#include "waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::HasSubstr;
using TNames = std::vector<std::string>;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";

std::vector<std::string> CollectArguments(std::vector<std::string> more) {
    std::vector<std::string> arguments{
        "collect",        "--namespace", smallServer, "--local-time", "20240229134500.000000+060",
        "--reachability", "yes"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

std::string WithoutTimes(const std::string& summary) {
    return summary.substr(0, summary.find("\nTime "));
}

// All files and output of a run, for comparison with another run.
struct TOutcome {
    TProgramResult result;
    std::vector<std::pair<std::string, std::string>> files;
};

TOutcome Collect(std::vector<std::string> more, bool isolates) {
    const TTemporaryDirectory directory;
    if (isolates) {
        more.emplace_back("--isolate");
    }
    TOutcome outcome{RunNoxinfo({CollectArguments(std::move(more)), directory.GetPath(), {}}), {}};
    for (const std::string& name : directory.GetNames()) {
        outcome.files.emplace_back(name, ReadFile(directory / name));
    }
    return outcome;
}

void ExpectSame(const TOutcome& one, const TOutcome& other) {
    EXPECT_EQ(one.result.status, other.result.status);
    EXPECT_EQ(WithoutTimes(one.result.standardOutput), WithoutTimes(other.result.standardOutput));
    EXPECT_EQ(one.result.standardError, other.result.standardError);
    EXPECT_EQ(one.files, other.files);
}

TEST(Isolation, ChangesNoByteOfFilesResultLogAndSummary) {
    const std::vector<std::string> arguments{"--kel-id",   "K0000001",   "--result",
                                             "result.xml", "--log-file", "run.log"};
    const TOutcome isolated = Collect(arguments, /*isolates=*/true);
    EXPECT_EQ(isolated.result.status, 0) << isolated.result.standardError;
    EXPECT_EQ(isolated.files.size(), 4U);
    ExpectSame(isolated, Collect(arguments, /*isolates=*/false));
}

TEST(Isolation, ChangesNoByteOfWhatIsPrinted) {
    const std::vector<std::string> arguments{"--kel-id", "K0000001", "--result", "-", "--verbose"};
    const TOutcome isolated = Collect(arguments, /*isolates=*/true);
    EXPECT_THAT(isolated.result.standardOutput, HasSubstr("<INSTANCE CLASSNAME=\"KELSG_CADAT\">"));
    EXPECT_THAT(isolated.result.standardError, HasSubstr("Ready for hwinventory\n"));
    ExpectSame(isolated, Collect(arguments, /*isolates=*/false));
}

TEST(Isolation, ChangesNoMessageOfAFailedRun) {
    const TTemporaryDirectory machine;
    WriteFile(machine / "empty.xml",
              "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><DECLARATION><DECLGROUP/></DECLARATION></CIM>");
    const auto result =
        RunNoxinfo({{"collect", "--namespace", machine / "empty.xml", "--isolate"}, machine.GetPath(), {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError,
              "0 NOXINFO: Can not get machine type from CIM result\n"
              "noxinfo: the plug-in returned no result: NOXINFO: Can not get machine type from CIM result; " +
                  (machine / "empty.xml") + " has no computer system, which is required\n");
    EXPECT_EQ(machine.GetNames(), TNames{"empty.xml"});
}

TEST(Isolation, TransfersAFailureWithControlBytes) {
    const TTemporaryDirectory directory;
    const auto result =
        RunNoxinfo({CollectArguments({"--plugin", "./a\x01.so", "--isolate"}), directory.GetPath(), {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError,
              "noxinfo: ./a\\x01.so: cannot open shared object file: No such file or directory\n");
}

TEST(Isolation, TimesTheSameSteps) {
    const TOutcome outcome = Collect({}, /*isolates=*/true);
    EXPECT_THAT(outcome.result.standardOutput,
                ::testing::ContainsRegex("Time        collect [0-9.]+ ms, load plug-in [0-9.]+ ms, "
                                         "request [0-9.]+ ms, finish [0-9.]+ ms, total [0-9.]+ ms\n$"));
}

// A run whose plug-in waits in a separate process.
class TWaitingPlugin : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(WaitUntil([&] { return HasUnfinished(directory_.GetPath(), "process"); }));
        plugin_ = ReadFile(UnfinishedFile(directory_.GetPath(), "process"));
        ASSERT_NE(plugin_, std::to_string(program_.GetProcess()));
        ASSERT_FALSE(HasPluginEnded());
    }

    // A zombie has ended, even if no process reaps it.
    bool HasPluginEnded() const {
        std::ifstream stream("/proc/" + plugin_ + "/stat");
        std::string process;
        std::string name;
        std::string state;
        stream >> process >> name >> state;
        return !stream || state == "Z";
    }

    TTemporaryDirectory directory_;
    TRunningProgram program_{
        NOXINFO_PROGRAM,
        {{"collect", "--namespace", smallServer, "--plugin", MISBEHAVING_PLUGIN, "--isolate"},
         directory_.GetPath(),
         {{"MISBEHAVIOUR", "GetData: waits"}}}};
    std::string plugin_;  // its process
};

TEST_F(TWaitingPlugin, IsKilledWhenASignalEndsTheRun) {
    program_.Send(SIGTERM);
    const auto result = program_.Wait();
    EXPECT_EQ(result.status, 143);
    EXPECT_FALSE(result.isKilled);
    EXPECT_EQ(result.standardError, "");
    EXPECT_FALSE(std::filesystem::exists("/proc/" + plugin_));  // not even as a zombie
    EXPECT_TRUE(directory_.IsEmpty());
}

TEST_F(TWaitingPlugin, DiesWithTheRunAfterASignalToTheProcessGroup) {
    ::kill(std::stoi(plugin_), SIGINT);
    program_.Send(SIGINT);
    EXPECT_EQ(program_.Wait().status, 130);
    EXPECT_TRUE(directory_.IsEmpty());
}

TEST_F(TWaitingPlugin, DiesWhenTheRunIsKilled) {
    program_.Send(SIGKILL);
    EXPECT_TRUE(program_.Wait().isKilled);
    EXPECT_TRUE(WaitUntil([&] { return HasPluginEnded(); }));
    // The lock on the directory ended with the process.
    EXPECT_EQ(RunNoxinfo({CollectArguments({}), directory_.GetPath(), {}}).status, 0);
    EXPECT_EQ(directory_.GetNames(), TNames{"hardwareinventory.xml.gz"});
}

TEST_F(TWaitingPlugin, IsReportedWhenItIsKilled) {
    ::kill(std::stoi(plugin_), SIGKILL);
    const auto result = program_.Wait();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "noxinfo: plug-in " MISBEHAVING_PLUGIN " died of signal 9 (Killed)\n");
    EXPECT_TRUE(directory_.IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
