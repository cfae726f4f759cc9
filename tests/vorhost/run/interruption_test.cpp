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

[[noreturn]] void WaitForever() {
    for (;;) {
        ::pause();
    }
}

void Append(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::app) << text;
}

TEST(Interruption, EndsTheProgramWithStatus128PlusTheSignalNumber) {
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        EXPECT_EXIT(
            {
                (void)std::signal(number, SIG_DFL);  // the signal may be ignored in the test environment
                EndOnSignals();
                (void)std::raise(number);
                WaitForever();
            },
            ExitedWithCode(128 + number), "");
    }
}

TEST(Interruption, LeavesAnIgnoredSignalIgnored) {
    EXPECT_EXIT(
        {
            (void)std::signal(SIGHUP, SIG_IGN);
            EndOnSignals();
            (void)std::raise(SIGHUP);
            BlockIfSignalled();
            ::_exit(notEnded);
        },
        ExitedWithCode(notEnded), "");
}

TEST(Interruption, DoesNotBlockSignalsInStartedPrograms) {
    EXPECT_EXIT(
        {
            EndOnSignals();
            ::execlp("sh", "sh", "-c", "kill -TERM $$", nullptr);
        },
        KilledBySignal(SIGTERM), "");
}

TEST(Interruption, BlocksBeforeAReportOnceASignalWasReceived) {
    EXPECT_EXIT(
        {
            EndOnSignals();
            (void)std::raise(SIGTERM);
            BlockIfSignalled();
            ::_exit(notEnded);
        },
        ExitedWithCode(143), "");
}

TEST(Interruption, RemovesAPartialFileAndKeepsTheEarlierOne) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "file", "earlier");
    EXPECT_EXIT(
        {
            EndOnSignals();
            const TOutputPlace place(directory / "file", "");
            WriteOutputFile(place, "file", /*syncs=*/true, [](std::ostream& out) {
                out << "half a f" << std::flush;
                (void)std::raise(SIGTERM);
                WaitForever();
            });
        },
        ExitedWithCode(143), "");
    EXPECT_EQ(directory.GetNames(), std::vector<std::string>{"file"});
    EXPECT_EQ(ReadFile(directory / "file"), "earlier");
}

TEST(Interruption, RemovesADirectoryWhileFilesAreCreatedInIt) {
    const TTemporaryDirectory directory;
    EXPECT_EXIT(
        {
            EndOnSignals();
            const TTargetDirectory target(directory.GetPath(), "");
            const TPrivateDirectory workplace(target, "", /*syncs=*/true);
            ASSERT_EQ(::fchdir(workplace.GetDescriptor()), 0);
            (void)std::raise(SIGTERM);
            for (int number = 0;; number = (number + 1) % 1000) {
                std::error_code ignored;
                std::filesystem::create_directory(std::to_string(number), ignored);
            }
        },
        ExitedWithCode(143), "");
    EXPECT_TRUE(directory.IsEmpty());
}

TEST(Interruption, WaitsForTheEndOfASignalGuard) {
    const TTemporaryDirectory directory;
    EXPECT_EXIT(
        {
            EndOnSignals();
            std::optional<TSignalGuard> guard(std::in_place);
            (void)std::raise(SIGTERM);
            Append(directory / "first", "done");
            ::usleep(10000);  // long enough to end the program if the guard had no effect
            Append(directory / "second", "done");
            guard.reset();
            WaitForever();
        },
        ExitedWithCode(143), "");
    EXPECT_EQ(directory.GetNames(), (std::vector<std::string>{"first", "second"}));
}

TEST(Interruption, RunsCleanupsInReverseOrderExceptDismissedOnes) {
    const TTemporaryDirectory directory;
    const std::string log = directory / "log";
    EXPECT_EXIT(
        {
            EndOnSignals();
            std::optional<TSignalGuard> guard(std::in_place);
            const TPendingCleanup first(*guard, [&] { Append(log, "first "); });
            const TPendingCleanup failing(*guard, [] { throw 42; });
            TPendingCleanup dismissed(*guard, [&] { Append(log, "dismissed "); });
            std::optional<TPendingCleanup> destroyed;
            destroyed.emplace(*guard, [&] { Append(log, "destroyed "); });
            const TPendingCleanup last(*guard, [&] { Append(log, "last "); });
            dismissed.Dismiss(*guard);
            guard.reset();
            destroyed.reset();
            (void)std::raise(SIGTERM);
            WaitForever();
        },
        ExitedWithCode(143), "");
    EXPECT_EQ(ReadFile(log), "last first ");
}

}  // namespace
}  // namespace NVORHOST
