// The running system's answers, and those of a captured tree.
#include "machine/replay/replay_system_calls.h"
#include "machine/system/live_system_calls.h"
#include "tests/machine/system/memory_files.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <string>

namespace NVORHOST {
namespace {

std::string ReadLine(const char* path) {
    std::string line;
    std::getline(std::ifstream(path), line);
    return line;
}

TEST(TLiveSystemCalls, AgreesWithTheKernelsFiles) {
    const TLiveSystemCalls calls;
    EXPECT_EQ(calls.KernelRelease(), ReadLine("/proc/sys/kernel/osrelease"));
    EXPECT_EQ(calls.NodeName(), ReadLine("/proc/sys/kernel/hostname"));
}

TEST(TLiveSystemCalls, AgreesWithTheCLibrary) {
    const TLiveSystemCalls calls;
    EXPECT_EQ(calls.PageSizeBytes(), static_cast<std::uint32_t>(sysconf(_SC_PAGESIZE)));
    EXPECT_EQ(calls.ClockTicksPerSecond(), static_cast<std::uint32_t>(sysconf(_SC_CLK_TCK)));
}

TEST(TLiveSystemCalls, SeesAHypervisorWhenTheKernelDoes) {
    std::ifstream cpuinfo("/proc/cpuinfo");
    const std::string text{std::istreambuf_iterator<char>(cpuinfo), {}};
    const bool isGuest = text.find(" hypervisor") != std::string::npos;
    EXPECT_EQ(TLiveSystemCalls().HypervisorSignature().has_value(), isGuest);
}

TEST(TLiveSystemCalls, KnowsLocalTimeOfTheMomentAskedFor) {
    const char* before = getenv("TZ");
    const std::string kept = before == nullptr ? "" : before;
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    EXPECT_EQ(TLiveSystemCalls().UtcOffsetMinutes(1704067200), 60);   // 2024-01-01
    EXPECT_EQ(TLiveSystemCalls().UtcOffsetMinutes(1719792000), 120);  // 2024-07-01
    before == nullptr ? unsetenv("TZ") : setenv("TZ", kept.c_str(), 1);
    tzset();
}

TEST(TReplaySystemCalls, AnswersFromTheTree) {
    TMemoryFiles files;
    files.AddFile("/proc/sys/kernel/osrelease", "5.10.0-8-amd64\n");
    files.AddFile("/proc/sys/kernel/hostname", "captured\n");
    files.AddFile("/proc/sys/kernel/arch", "x86_64\n");
    const TReplaySystemCalls calls(files);
    EXPECT_EQ(calls.KernelRelease(), "5.10.0-8-amd64");
    EXPECT_EQ(calls.NodeName(), "captured");
    EXPECT_EQ(calls.Architecture(), "x86_64");
}

TEST(TReplaySystemCalls, TakesTheConfiguredHostNameWhereTheRunningOneIsMissing) {
    TMemoryFiles files;
    files.AddFile("/etc/hostname", "configured\n");
    EXPECT_EQ(TReplaySystemCalls(files).NodeName(), "configured");
}

TEST(TReplaySystemCalls, AnswersNothingThatTheTreeDoesNotHold) {
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
