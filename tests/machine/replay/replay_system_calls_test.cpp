#include "machine/replay/replay_system_calls.h"

#include "tests/machine/system/memory_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr char text[] =
    "LocalTime 20240229134500.000000+060\n"
    "KernelRelease 6.1.0-18-amd64\n"
    "NodeName server%201%25%0a\n"
    "Architecture x86_64\n"
    "HypervisorSignature bhyve%20bhyve%20\n"
    "PageSizeBytes 4096\n"
    "ClockTicksPerSecond 100\n"
    "UtcOffsetMinutes 1700000000 60\n"
    "InterfaceAddresses\n"
    "InterfaceAddress lo 127.0.0.1\n"
    "InterfaceAddress eth0 ::1\n";

TEST(ReplaySystemCalls, PrefersCapturedAnswersToFiles) {
    TMemoryFiles files;
    files.AddFile("/noxinfo-system.txt", text);
    files.AddFile("/proc/sys/kernel/osrelease", "other\n");
    files.AddFile("/proc/sys/kernel/hostname", "other\n");
    const TReplaySystemCalls calls(files);
    EXPECT_EQ(calls.KernelRelease(), "6.1.0-18-amd64");
    EXPECT_EQ(calls.NodeName(), "server 1%\n");
    EXPECT_EQ(calls.Architecture(), "x86_64");
    EXPECT_EQ(calls.PageSizeBytes(), 4096U);
    EXPECT_EQ(calls.ClockTicksPerSecond(), 100U);
    EXPECT_EQ(calls.HypervisorSignature(), "bhyve bhyve ");
    EXPECT_EQ(calls.InterfaceAddresses()->size(), 2U);
    EXPECT_EQ(calls.GetAnswers().localTime, "20240229134500.000000+060");
}

TEST(ReplaySystemCalls, ReportsAnswersThatCannotBeRead) {
    TMemoryFiles files;
    EXPECT_EQ(TReplaySystemCalls(files).GetAnswersError(), "");
    files.AddRefusal("/noxinfo-system.txt", EReadStatus::denied);
    EXPECT_THAT(TReplaySystemCalls(files).GetAnswersError(), testing::StartsWith("/noxinfo-system.txt: "));
}

TEST(ReplaySystemCalls, ReturnsUtcOffsetsOfCapturedMomentsOnly) {
    TMemoryFiles files;
    files.AddFile("/noxinfo-system.txt", text);
    const TReplaySystemCalls calls(files);
    EXPECT_EQ(calls.UtcOffsetMinutes(1700000000), 60);
    EXPECT_EQ(calls.UtcOffsetMinutes(1700000001), std::nullopt);
}

TEST(ReplaySystemCalls, FallsBackToTheFilesOfTheTree) {
    TMemoryFiles files;
    files.AddFile("/proc/sys/kernel/osrelease", "5.10.0-8-amd64\n");
    files.AddFile("/proc/sys/kernel/hostname", "captured\n");
    files.AddFile("/proc/sys/kernel/arch", "x86_64\n");
    const TReplaySystemCalls calls(files);
    EXPECT_EQ(calls.KernelRelease(), "5.10.0-8-amd64");
    EXPECT_EQ(calls.NodeName(), "captured");
    EXPECT_EQ(calls.Architecture(), "x86_64");
}

TEST(ReplaySystemCalls, FallsBackToTheConfiguredHostName) {
    TMemoryFiles files;
    files.AddFile("/etc/hostname", "configured\n");
    EXPECT_EQ(TReplaySystemCalls(files).NodeName(), "configured");
}

TEST(ReplaySystemCalls, ReturnsNulloptForAnswersMissingFromTheTree) {
    const TMemoryFiles files;
    const TReplaySystemCalls calls(files);
    EXPECT_EQ(calls.KernelRelease(), std::nullopt);
    EXPECT_EQ(calls.NodeName(), std::nullopt);
    EXPECT_EQ(calls.Architecture(), std::nullopt);
    EXPECT_EQ(calls.PageSizeBytes(), std::nullopt);
    EXPECT_EQ(calls.ClockTicksPerSecond(), std::nullopt);
    EXPECT_EQ(calls.HypervisorSignature(), std::nullopt);
    EXPECT_EQ(calls.UtcOffsetMinutes(0), std::nullopt);
    EXPECT_FALSE(calls.InterfaceAddresses());
}

}  // namespace
}  // namespace NVORHOST
