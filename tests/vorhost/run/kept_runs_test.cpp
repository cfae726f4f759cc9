#include "vorhost/run/kept_runs.h"

#include "tests/program/temporary_directory.h"
#include "vorhost/run/run_failure.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using namespace std::chrono_literals;
using NKELVOR20::TCIMDateTime;
using ::testing::ElementsAre;

constexpr TRunTime leapDay = std::chrono::sys_days(std::chrono::year(2024) / 2 / 29) + 12h + 45min;

// Keeps a run with one file and returns its name.
std::string KeepRun(const TTemporaryDirectory& directory, TRunTime time, std::size_t count) {
    const TTargetDirectory parent(directory.GetPath(), "");
    TKeptRun run(parent, "cannot write", /*syncs=*/false);
    const TFileDescriptor file(::openat(run.GetTarget().GetDescriptor(), "file", O_WRONLY | O_CREAT, 0600));
    EXPECT_TRUE(file.IsOpen());
    return run.MoveIntoPlace(time, count);
}

void MakeRun(const TTemporaryDirectory& directory, const std::string& name) {
    std::filesystem::create_directory(directory / name);
    WriteFile(directory / (name + "/file"), "");
}

TEST(RunName, IsTheTimeInUtcWithMilliseconds) {
    EXPECT_EQ(MakeRunName(leapDay), "20240229T124500.000Z");
    EXPECT_EQ(MakeRunName(leapDay + 7s + 89ms), "20240229T124507.089Z");
}

TEST(RunName, IsRecognisedAndOtherNamesAreNot) {
    EXPECT_TRUE(IsRunName("20240229T124500.000Z"));
    for (const char* name :
         {"", "20240229T124500.000", "20240229T124500Z", "20240229 124500.000Z", "20240229T124500,000Z",
          "2024022xT124500.000Z", "20240229T124500.000Z2", "spool", ".20240229T12450.000Z"}) {
        EXPECT_FALSE(IsRunName(name)) << name;
    }
}

TEST(RunTime, SubtractsTheOffsetAndCutsMicroseconds) {
    EXPECT_EQ(ToRunTime(*TCIMDateTime::FromText("20240229134500.123456+060")), leapDay + 123ms);
    EXPECT_EQ(ToRunTime(*TCIMDateTime::FromText("20240229004500.000000-720")), leapDay);
}

TEST(KeptRun, AppearsWithItsFilesWhenItIsMovedIntoPlace) {
    const TTemporaryDirectory directory;
    EXPECT_EQ(KeepRun(directory, leapDay, 3), "20240229T124500.000Z");
    EXPECT_THAT(directory.GetNames(), ElementsAre("20240229T124500.000Z"));
    EXPECT_TRUE(std::filesystem::exists(directory / "20240229T124500.000Z/file"));
    EXPECT_EQ(std::filesystem::status(directory / "20240229T124500.000Z").permissions(),
              std::filesystem::perms::owner_all);
}

TEST(KeptRun, LeavesNothingIfItIsNotMoved) {
    const TTemporaryDirectory directory;
    {
        const TTargetDirectory parent(directory.GetPath(), "");
        const TKeptRun run(parent, "cannot write", /*syncs=*/false);
        const TFileDescriptor file(
            ::openat(run.GetTarget().GetDescriptor(), "file", O_WRONLY | O_CREAT, 0600));
        EXPECT_FALSE(directory.IsEmpty());
    }
    EXPECT_TRUE(directory.IsEmpty());
}

TEST(KeptRun, TakesTheNextMillisecondIfTheNameIsTaken) {
    const TTemporaryDirectory directory;
    MakeRun(directory, "20240229T124500.000Z");
    WriteFile(directory / "20240229T124500.001Z", "a file");
    std::filesystem::create_symlink("nowhere", directory / "20240229T124500.002Z");
    EXPECT_EQ(KeepRun(directory, leapDay, 9), "20240229T124500.003Z");
}

TEST(KeptRun, RemovesAllButTheLastRuns) {
    const TTemporaryDirectory directory;
    MakeRun(directory, "20240227T124500.000Z");
    MakeRun(directory, "20240228T124500.000Z");
    MakeRun(directory, "20231231T235959.999Z");
    KeepRun(directory, leapDay, 3);
    EXPECT_THAT(directory.GetNames(),
                ElementsAre("20240227T124500.000Z", "20240228T124500.000Z", "20240229T124500.000Z"));
    KeepRun(directory, leapDay + 24h, 1);
    EXPECT_THAT(directory.GetNames(), ElementsAre("20240301T124500.000Z"));
}

TEST(KeptRun, RemovesRunsThatAreDatedLaterFirst) {
    const TTemporaryDirectory directory;
    MakeRun(directory, "20240228T124500.000Z");
    MakeRun(directory, "20990101T000000.000Z");
    KeepRun(directory, leapDay, 2);
    EXPECT_THAT(directory.GetNames(), ElementsAre("20240228T124500.000Z", "20240229T124500.000Z"));
}

TEST(KeptRun, RemovesOnlyDirectoriesWithTheNameOfARun) {
    const TTemporaryDirectory directory;
    const TTemporaryDirectory elsewhere;
    WriteFile(elsewhere / "file", "");
    MakeRun(directory, "spool");
    WriteFile(directory / "20230101T000000.000Z", "a file");
    std::filesystem::create_symlink(elsewhere.GetPath(), directory / "20230102T000000.000Z");
    KeepRun(directory, leapDay, 1);
    EXPECT_THAT(directory.GetNames(),
                ElementsAre("20230101T000000.000Z", "20230102T000000.000Z", "20240229T124500.000Z", "spool"));
    EXPECT_TRUE(std::filesystem::exists(elsewhere / "file"));
}

TEST(KeptRun, RemovesRunsWithDirectoriesInThem) {
    const TTemporaryDirectory directory;
    MakeRun(directory, "20240228T124500.000Z");
    std::filesystem::create_directories(directory / "20240228T124500.000Z/more/deeper");
    KeepRun(directory, leapDay, 1);
    EXPECT_THAT(directory.GetNames(), ElementsAre("20240229T124500.000Z"));
}

TEST(KeptRun, FailsInADirectoryThatCannotBeWritten) {
    const TTargetDirectory parent("/proc/self", "");
    try {
        const TKeptRun run(parent, "cannot write to /proc/self", /*syncs=*/false);
        FAIL() << "no failure";
    } catch (const TRunFailure& failure) {
        EXPECT_THAT(failure.what(), ::testing::StartsWith("cannot write to /proc/self: "));
    }
}

}  // namespace
}  // namespace NVORHOST
