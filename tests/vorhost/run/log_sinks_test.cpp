#include "vorhost/run/log_sinks.h"

#include "tests/program/temporary_directory.h"
#include "vorhost/run/run_failure.h"
#include "vorhost/services/core_logger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace NVORHOST {
namespace {

using ::testing::ElementsAre;

// Logs one line of each level and returns standard error.
std::string LogWith(const TLogOptions& options) {
    testing::internal::CaptureStderr();
    const TLogSinks sinks(options);
    TCoreLogger::Get().Log(0, "failure");
    TCoreLogger::Get().Log(3, "detail");
    EXPECT_THAT(sinks.GetHardFailures(), ElementsAre("failure"));
    EXPECT_NO_THROW(sinks.RequireWritten());
    return testing::internal::GetCapturedStderr();
}

TEST(LogSinks, PrintHardFailuresByDefault) {
    EXPECT_EQ(LogWith({}), "0 failure\n");
}

TEST(LogSinks, PrintEveryLevelIfVerbose) {
    EXPECT_EQ(LogWith({std::nullopt, /*verbose=*/true}), "0 failure\n3 detail\n");
}

TEST(LogSinks, AppendEveryLevelToAFileOfItsOwner) {
    const TTemporaryDirectory directory;
    EXPECT_EQ(LogWith({directory / "log", /*verbose=*/false}), "");
    EXPECT_EQ(LogWith({directory / "log", /*verbose=*/true}), "0 failure\n3 detail\n");
    EXPECT_EQ(ReadFile(directory / "log"), "0 failure\n3 detail\n0 failure\n3 detail\n");
    struct stat status {};
    ASSERT_EQ(::stat((directory / "log").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST(LogSinks, RejectASymbolicLink) {
    const TTemporaryDirectory directory;
    std::filesystem::create_symlink("target", directory / "log");
    try {
        const TLogSinks sinks({directory / "log", /*verbose=*/false});
        FAIL();
    } catch (const TRunFailure& failure) {
        EXPECT_EQ(failure.what(),
                  "cannot append to log file " + (directory / "log") + ": it is a symbolic link");
    }
}

TEST(LogSinks, ReportALineThatCouldNotBeWritten) {
    const TLogSinks sinks({"/dev/full", /*verbose=*/false});
    TCoreLogger::Get().Log(3, "detail");
    try {
        sinks.RequireWritten();
        FAIL();
    } catch (const TRunFailure& failure) {
        EXPECT_STREQ(failure.what(), "cannot append to log file /dev/full: No space left on device");
    }
}

}  // namespace
}  // namespace NVORHOST
