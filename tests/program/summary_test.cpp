#include "program/summary.h"

#include "program/strict_mode.h"

#include <gtest/gtest.h>

#include <sstream>

namespace NVORHOST {
namespace {

std::string Printed(const TCollectOutcome& outcome) {
    std::ostringstream out;
    PrintOutcome(outcome, out);
    return out.str();
}

TEST(PrintOutcome, PrintsNothingWithoutProblems) {
    EXPECT_EQ(Printed({}), "");
}

TEST(PrintOutcome, PrintsARowForEachKindOfProblem) {
    TCollectOutcome outcome;
    outcome.failedCollectors = 1;
    outcome.deniedSources = {"/a"};
    outcome.failedSources = {"/b", "/c"};
    outcome.timedOutSources = {"/1", "/2", "/3", "/4"};
    outcome.asleepSources = {"/d"};
    outcome.warnings = {"malformed table"};
    outcome.replacedBytes = 3;
    EXPECT_EQ(Printed(outcome),
              "Failed      1 collector; see the log (--verbose)\n"
              "Denied      1 source needs root: /a\n"
              "Unread      2 sources could not be read: /b, /c\n"
              "Timed out   4 sources did not answer in time: /1, /2, /3, ...\n"
              "Asleep      1 source would wake a device (see --wake): /d\n"
              "Warning     malformed table\n"
              "Replaced    3 bytes of device text were not valid UTF-8\n");
}

TEST(PrintOutcome, UsesTheSingularForOneByte) {
    TCollectOutcome outcome;
    outcome.replacedBytes = 1;
    EXPECT_EQ(Printed(outcome), "Replaced    1 byte of device text was not valid UTF-8\n");
}

TEST(PrintOutcome, CountsTheValuesThatAreNotKnown) {
    TCollectOutcome outcome;
    outcome.values[static_cast<std::size_t>(EValueStatus::present)] = 100;
    outcome.values[static_cast<std::size_t>(EValueStatus::absent)] = 50;
    EXPECT_EQ(Printed(outcome), "");
    outcome.values[static_cast<std::size_t>(EValueStatus::placeholder)] = 1;
    EXPECT_EQ(Printed(outcome), "Values      1 value not known: 1 placeholder; see noxinfo show --sources\n");
    outcome.values[static_cast<std::size_t>(EValueStatus::denied)] = 12;
    outcome.values[static_cast<std::size_t>(EValueStatus::timedOut)] = 2;
    EXPECT_EQ(Printed(outcome),
              "Values      15 values not known: 12 denied, 2 timed out, 1 placeholder; see noxinfo show "
              "--sources\n");
}

TEST(PrintSummary, PrintsEveryRowInOrder) {
    TRunSummary summary;
    summary.machine = "Maker Model";
    summary.origin = "this machine";
    summary.directory = "dir";
    TInventoryDocument hardware;
    hardware.fileName = "hardware.gz";
    hardware.sizeBytes = 1234567;
    hardware.resources = {{"Disk", 2}, {"Server", 1}};
    TInventoryDocument system;
    system.fileName = "system.gz";
    system.sizeBytes = 42;
    system.fault = {14, "A&B"};
    summary.documents = {hardware, system};
    summary.earlierFiles = {"old.gz"};
    summary.completedFiles = {"killed.gz"};
    summary.credential = "obtained";
    summary.times = {{"collect", std::chrono::microseconds(1250)}, {"total", std::chrono::milliseconds(2)}};
    std::ostringstream out;
    PrintSummary(summary, out);
    EXPECT_EQ(out.str(),
              "Machine     Maker Model\n"
              "Source      this machine\n"
              "Collected   3 resources: 2 Disk, 1 Server\n"
              "Files       dir/hardware.gz, 1,234,567 bytes\n"
              "            dir/system.gz, 42 bytes\n"
              "Malformed   system.gz is not well-formed XML: unescaped value in line 14: A&B\n"
              "Earlier     old.gz was written by an earlier run\n"
              "Completed   killed.gz of a run that was killed\n"
              "Credential  obtained\n"
              "Time        collect 1.2 ms, total 2.0 ms\n");
}

TEST(PrintSummary, StatesThatThePluginWroteNoDocuments) {
    TRunSummary summary;
    summary.machine = "Maker Model";
    summary.origin = "this machine";
    summary.credential = "none: no customer identity";
    std::ostringstream out;
    PrintSummary(summary, out);
    EXPECT_EQ(out.str(),
              "Machine     Maker Model\n"
              "Source      this machine\n"
              "Files       none: the plug-in wrote no documents\n"
              "Credential  none: no customer identity\n"
              "Time        \n");
}

TEST(GetExitStatus, Is3OnlyForGapsInStrictMode) {
    TCollectOutcome gaps;
    gaps.deniedSources = {"/a"};
    EXPECT_EQ(GetExitStatus(gaps, /*isStrict=*/true), 3);
    EXPECT_EQ(GetExitStatus(gaps, /*isStrict=*/false), 0);
    EXPECT_EQ(GetExitStatus({}, /*isStrict=*/true), 0);
    TCollectOutcome asleep;
    asleep.asleepSources = {"/a"};
    EXPECT_EQ(GetExitStatus(asleep, /*isStrict=*/true), 0);
}

}  // namespace
}  // namespace NVORHOST
