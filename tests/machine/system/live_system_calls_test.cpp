#include "machine/system/live_system_calls.h"

#include <gtest/gtest.h>
#include <sys/statvfs.h>
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

TEST(LiveSystemCalls, AgreesWithProcfs) {
    const TLiveSystemCalls calls;
    EXPECT_EQ(calls.ReadKernelRelease(), ReadLine("/proc/sys/kernel/osrelease"));
    EXPECT_EQ(calls.ReadNodeName(), ReadLine("/proc/sys/kernel/hostname"));
}

TEST(LiveSystemCalls, AgreesWithTheCLibrary) {
    const TLiveSystemCalls calls;
    EXPECT_EQ(calls.ReadPageSizeBytes(), static_cast<std::uint32_t>(::sysconf(_SC_PAGESIZE)));
    EXPECT_EQ(calls.ReadClockTicksPerSecond(), static_cast<std::uint32_t>(::sysconf(_SC_CLK_TCK)));
}

TEST(LiveSystemCalls, FindsAHypervisorIfTheKernelDoes) {
    std::ifstream cpuinfo("/proc/cpuinfo");
    const std::string text{std::istreambuf_iterator<char>(cpuinfo), {}};
    const bool isGuest = text.find(" hypervisor") != std::string::npos;
    EXPECT_EQ(TLiveSystemCalls().ReadHypervisorSignature().has_value(), isGuest);
}

TEST(LiveSystemCalls, ReturnsTheUtcOffsetOfAMoment) {
    const char* before = ::getenv("TZ");
    const std::string kept = before == nullptr ? "" : before;
    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    ::tzset();
    EXPECT_EQ(TLiveSystemCalls().ReadUtcOffsetMinutes(1704067200), 60);   // 2024-01-01
    EXPECT_EQ(TLiveSystemCalls().ReadUtcOffsetMinutes(1719792000), 120);  // 2024-07-01
    before == nullptr ? ::unsetenv("TZ") : ::setenv("TZ", kept.c_str(), 1);
    ::tzset();
}

TEST(LiveSystemCalls, ReturnsAddressesWithTheNamesOfTheirInterfaces) {
    const auto addresses = TLiveSystemCalls().ReadInterfaceAddresses();
    ASSERT_TRUE(addresses);
    for (const TInterfaceAddress& row : *addresses) {
        ASSERT_TRUE(row.interface.has_value());
        EXPECT_TRUE(row.address.size() == 4 || row.address.size() == 16) << *row.interface;
        EXPECT_EQ(row.interface->find(':'), std::string::npos) << *row.interface;
    }
}

TEST(LiveSystemCalls, AgreesWithTheCLibraryOnTheSpaceOfAFileSystem) {
    struct statvfs expected {};
    ASSERT_EQ(::statvfs("/", &expected), 0);
    const auto space = TLiveSystemCalls().ReadFileSystemSpace("/");
    ASSERT_TRUE(space);
    EXPECT_EQ(space->blockSizeBytes, expected.f_frsize);
    EXPECT_EQ(space->sizeBytes, expected.f_frsize * expected.f_blocks);
    EXPECT_LE(space->availableBytes, space->sizeBytes);
}

TEST(LiveSystemCalls, HasNoSpaceForAMissingMountPoint) {
    EXPECT_EQ(TLiveSystemCalls().ReadFileSystemSpace("/no/such/mount/point"), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
