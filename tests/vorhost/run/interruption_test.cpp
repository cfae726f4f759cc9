// What a signal that ends the program waits for and what it undoes, each in a process of its own.
#include "vorhost/run/interruption.h"

#include "tests/program/temporary_directory.h"
#include "vorhost/run/output_file.h"
#include "vorhost/run/private_directory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace NVORHOST {
namespace {

using ::testing::ExitedWithCode;
using ::testing::KilledBySignal;

constexpr int notEnded = 77;

[[noreturn]] void WaitForTheEnd() {
    for (;;) {
        ::pause();
    }
}

void Append(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::app) << text;
}

TEST(Interruption, EndsTheProgramWithAStatusThatTellsTheSignal) {
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        EXPECT_EXIT(
            {
                std::signal(number, SIG_DFL);  // who starts the tests may have it ignored
                EndOnSignals();
                std::raise(number);
                WaitForTheEnd();
            },
            ExitedWithCode(128 + number), "");
    }
}

TEST(Interruption, LeavesASignalIgnoredThatWasIgnoredBefore) {
    EXPECT_EXIT(
        {
            std::signal(SIGHUP, SIG_IGN);
            EndOnSignals();
            std::raise(SIGHUP);
            GiveWayToSignals();
            ::_exit(notEnded);
        },
        ExitedWithCode(notEnded), "");
}

TEST(Interruption, IsNothingThatAStartedProgramInherits) {
    EXPECT_EXIT(
        {
            EndOnSignals();
            ::execlp("sh", "sh", "-c", "kill -TERM $$", nullptr);
        },
        KilledBySignal(SIGTERM), "");
}

TEST(Interruption, ComesBeforeTheReportOfTheRun) {
    EXPECT_EXIT(
        {
            EndOnSignals();
            std::raise(SIGTERM);
            GiveWayToSignals();
            ::_exit(notEnded);
        },
        ExitedWithCode(143), "");
}

TEST(Interruption, RemovesAFileThatIsBeingWrittenAndLeavesTheEarlierOne) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "file", "earlier");
    EXPECT_EXIT(
        {
            EndOnSignals();
            const TOutputPlace place(directory / "file", "");
            WriteOutputFile(place, "file", /*syncs=*/true, [](std::ostream& out) {
                out << "half a f" << std::flush;
                std::raise(SIGTERM);
                WaitForTheEnd();
            });
        },
        ExitedWithCode(143), "");
    EXPECT_EQ(directory.GetNames(), std::vector<std::string>{"file"});
    EXPECT_EQ(ReadFile(directory / "file"), "earlier");
}

TEST(Interruption, RemovesADirectoryThatIsBeingFilled) {
    const TTemporaryDirectory directory;
    EXPECT_EXIT(
        {
            EndOnSignals();
            const TTargetDirectory target(directory.GetPath(), "");
            const TPrivateDirectory workplace(target, "", /*syncs=*/true);
            ASSERT_EQ(::fchdir(workplace.GetDescriptor()), 0);
            std::raise(SIGTERM);
            for (int number = 0;; number = (number + 1) % 1000) {
                std::error_code ignored;
                std::filesystem::create_directory(std::to_string(number), ignored);
            }
        },
        ExitedWithCode(143), "");
    EXPECT_TRUE(directory.IsEmpty());
}

TEST(Interruption, WaitsForStepsThatBelongTogether) {
    const TTemporaryDirectory directory;
    EXPECT_EXIT(
        {
            EndOnSignals();
            std::optional<TUninterrupted> together(std::in_place);
            std::raise(SIGTERM);
            Append(directory / "first", "done");
            ::usleep(10000);  // time enough to end the program, were it not held
            Append(directory / "second", "done");
            together.reset();
            WaitForTheEnd();
        },
        ExitedWithCode(143), "");
    EXPECT_EQ(directory.GetNames(), (std::vector<std::string>{"first", "second"}));
}

TEST(Interruption, UndoesWhatWasBegunLastFirstAndNothingThatIsFinished) {
    const TTemporaryDirectory directory;
    const std::string log = directory / "log";
    EXPECT_EXIT(
        {
            EndOnSignals();
            std::optional<TUninterrupted> begun(std::in_place);
            const TUnfinished first(*begun, [&] { Append(log, "first "); });
            const TUnfinished failing(*begun, [] { throw 42; });
            TUnfinished finished(*begun, [&] { Append(log, "finished "); });
            std::optional<TUnfinished> forgotten;
            forgotten.emplace(*begun, [&] { Append(log, "forgotten "); });
            const TUnfinished last(*begun, [&] { Append(log, "last "); });
            finished.Finish(*begun);
            begun.reset();
            forgotten.reset();
            std::raise(SIGTERM);
            WaitForTheEnd();
        },
        ExitedWithCode(143), "");
    EXPECT_EQ(ReadFile(log), "last first ");
}

}  // namespace
}  // namespace NVORHOST
