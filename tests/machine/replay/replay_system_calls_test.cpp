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
    "InterfaceAddress eth0 ::1\n"
    "FileSystemSpace /home 4096 1000000 400000\n";

TEST(ReplaySystemCalls, PrefersCapturedAnswersToFiles) {
    TMemoryFiles files;
    files.AddFile("/noxinfo-system.txt", text);
    files.AddFile("/proc/sys/kernel/osrelease", "other\n");
    files.AddFile("/proc/sys/kernel/hostname", "other\n");
    const TReplaySystemCalls calls(files);
    EXPECT_EQ(calls.ReadKernelRelease(), "6.1.0-18-amd64");
    EXPECT_EQ(calls.ReadNodeName(), "server 1%\n");
    EXPECT_EQ(calls.ReadArchitecture(), "x86_64");
    EXPECT_EQ(calls.ReadPageSizeBytes(), 4096U);
    EXPECT_EQ(calls.ReadClockTicksPerSecond(), 100U);
    EXPECT_EQ(calls.ReadHypervisorSignature(), "bhyve bhyve ");
    EXPECT_EQ(calls.ReadInterfaceAddresses()->size(), 2U);
    EXPECT_EQ(calls.GetAnswers().localTime, "20240229134500.000000+060");
}

TEST(ReplaySystemCalls, ReportsAnswersThatCannotBeRead) {
    TMemoryFiles files;
    EXPECT_EQ(TReplaySystemCalls(files).FindAnswersError(), std::nullopt);
    files.AddRefusal("/noxinfo-system.txt", EReadStatus::denied);
    EXPECT_THAT(TReplaySystemCalls(files).FindAnswersError(),
                testing::Optional(testing::StartsWith("/noxinfo-system.txt: ")));
}

TEST(ReplaySystemCalls, ReturnsUtcOffsetsOfCapturedMomentsOnly) {
    TMemoryFiles files;
    files.AddFile("/noxinfo-system.txt", text);
    const TReplaySystemCalls calls(files);
    EXPECT_EQ(calls.ReadUtcOffsetMinutes(1700000000), 60);
    EXPECT_EQ(calls.ReadUtcOffsetMinutes(1700000001), std::nullopt);
}

TEST(ReplaySystemCalls, ReturnsTheSpaceOfCapturedMountPointsOnly) {
    TMemoryFiles files;
    files.AddFile("/noxinfo-system.txt", text);
    const TReplaySystemCalls calls(files);
    EXPECT_EQ(calls.ReadFileSystemSpace("/home"), (TFileSystemSpace{4096, 1'000'000, 400'000}));
    EXPECT_EQ(calls.ReadFileSystemSpace("/"), std::nullopt);
}

TEST(ReplaySystemCalls, FallsBackToTheFilesOfTheTree) {
    TMemoryFiles files;
    files.AddFile("/proc/sys/kernel/osrelease", "5.10.0-8-amd64\n");
    files.AddFile("/proc/sys/kernel/hostname", "captured\n");
    files.AddFile("/proc/sys/kernel/arch", "x86_64\n");
    const TReplaySystemCalls calls(files);
    EXPECT_EQ(calls.ReadKernelRelease(), "5.10.0-8-amd64");
    EXPECT_EQ(calls.ReadNodeName(), "captured");
    EXPECT_EQ(calls.ReadArchitecture(), "x86_64");
}

TEST(ReplaySystemCalls, FallsBackToTheConfiguredHostName) {
    TMemoryFiles files;
    files.AddFile("/etc/hostname", "configured\n");
    EXPECT_EQ(TReplaySystemCalls(files).ReadNodeName(), "configured");
}

TEST(ReplaySystemCalls, ReturnsNulloptForAnswersMissingFromTheTree) {
    const TMemoryFiles files;
    const TReplaySystemCalls calls(files);
    EXPECT_EQ(calls.ReadKernelRelease(), std::nullopt);
    EXPECT_EQ(calls.ReadNodeName(), std::nullopt);
    EXPECT_EQ(calls.ReadArchitecture(), std::nullopt);
    EXPECT_EQ(calls.ReadPageSizeBytes(), std::nullopt);
    EXPECT_EQ(calls.ReadClockTicksPerSecond(), std::nullopt);
    EXPECT_EQ(calls.ReadHypervisorSignature(), std::nullopt);
    EXPECT_EQ(calls.ReadUtcOffsetMinutes(0), std::nullopt);
    EXPECT_FALSE(calls.ReadInterfaceAddresses());
}

}  // namespace
}  // namespace NVORHOST
