// Runs with the same target directory do not interfere, even if one of them is killed.

#include "program_run.h"
#include "temporary_directory.h"
#include "waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <deque>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::EndsWith;
using TNames = std::vector<std::string>;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";
const TNames inventory{"hardwareinventory.xml.gz", "systeminformation.xml.gz"};

TProgramRun Collecting(const TTemporaryDirectory& directory, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments{
        "collect",        "--namespace", smallServer, "--local-time", "20240229134500.000000+060",
        "--reachability", "no",          "--kel-id",  "K0000001"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return {arguments, directory.GetPath(), {}};
}

void ExpectWholeInventory(const TTemporaryDirectory& directory) {
    EXPECT_EQ(directory.GetNames(), inventory);
    EXPECT_EQ(ReadCompressedFile(directory / inventory[0]),
              ReadFile(NOXINFO_TEST_DATA "/small-server.hardware.xml"));
    EXPECT_EQ(ReadCompressedFile(directory / inventory[1]),
              ReadFile(NOXINFO_TEST_DATA "/small-server.system.xml"));
}

// A run that has finished its documents and blocks on the pipe of its result.
class TStuckRun {
  public:
    explicit TStuckRun(const TTemporaryDirectory& directory)
        : program_(NOXINFO_PROGRAM, Collecting(directory, {"--result", MakePipe()})) {
        isStuck_ = WaitUntil([&] { return HasUnfinished(directory.GetPath(), inventory[0]); });
    }

    bool IsStuck() const { return isStuck_; }
    std::string TakeResult() const { return ReadFile(pipe_); }
    TRunningProgram& GetProgram() { return program_; }

  private:
    std::string MakePipe() const {
        (void)::mkfifo(pipe_.c_str(), S_IRUSR | S_IWUSR);
        return pipe_;
    }

    TTemporaryDirectory elsewhere_;
    std::string pipe_ = elsewhere_ / "pipe";
    TRunningProgram program_;
    bool isStuck_ = false;
};

TEST(NeighbouringRuns, SucceedIfOneBeginsAndEndsDuringTheOther) {
    const TTemporaryDirectory directory;
    TStuckRun outer(directory);
    ASSERT_TRUE(outer.IsStuck());
    EXPECT_EQ(RunNoxinfo(Collecting(directory)).status, 0);
    EXPECT_THAT(outer.TakeResult(), EndsWith("</CIM>\n"));
    EXPECT_EQ(outer.GetProgram().Wait().status, 0);
    ExpectWholeInventory(directory);
}

TEST(NeighbouringRuns, SucceedIfTheyStartAtTheSameTime) {
    const TTemporaryDirectory directory;
    for (int round = 0; round < 5; ++round) {
        std::deque<TRunningProgram> runs;
        for (int number = 0; number < 6; ++number) {
            runs.emplace_back(NOXINFO_PROGRAM, Collecting(directory));
        }
        for (TRunningProgram& run : runs) {
            const auto result = run.Wait();
            EXPECT_EQ(result.status, 0) << result.standardError;
        }
        ExpectWholeInventory(directory);
    }
}

TEST(NeighbouringRuns, CleanUpAfterARunThatWasKilled) {
    const TTemporaryDirectory directory;
    WriteFile(directory / inventory[0], "earlier");
    {
        TStuckRun killed(directory);
        ASSERT_TRUE(killed.IsStuck());
        killed.GetProgram().Send(SIGKILL);
        EXPECT_TRUE(killed.GetProgram().Wait().isKilled);
    }
    EXPECT_EQ(ReadFile(directory / inventory[0]), "earlier");
    EXPECT_TRUE(HasUnfinished(directory.GetPath(), inventory[0]));
    EXPECT_EQ(RunNoxinfo(Collecting(directory)).status, 0);
    ExpectWholeInventory(directory);
}

TEST(NeighbouringRuns, CleanUpAfterARunThatWasKilledInThePlugin) {
    const TTemporaryDirectory directory;
    WriteFile(directory / inventory[0], "earlier");
    TProgramRun run = Collecting(directory, {"--plugin", MISBEHAVING_PLUGIN});
    run.environment["MISBEHAVIOUR"] = "GetData: waits";
    TRunningProgram program = StartNoxinfo(run);
    ASSERT_TRUE(WaitUntil([&] { return HasUnfinished(directory.GetPath(), inventory[0]); }));
    program.Send(SIGKILL);
    EXPECT_TRUE(program.Wait().isKilled);
    EXPECT_EQ(ReadFile(directory / inventory[0]), "earlier");
    EXPECT_EQ(RunNoxinfo(Collecting(directory)).status, 0);
    ExpectWholeInventory(directory);
}

}  // namespace
}  // namespace NVORHOST
