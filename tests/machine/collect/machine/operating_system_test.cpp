// The running system: values of its files, and absent ones.
#include "machine/collect/frame/cim_time.h"
#include "tests/machine/collect/collect_fixture.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr const char* system = "KELSG_OperatingSystem";

std::string Get(std::string_view tree, std::string_view property) {
    TCollected collected;
    Collect(tree, collected);
    return collected.Get(system, property);
}

TEST(OperatingSystem, LeavesUnknownQuantitiesAbsent) {
    TCollected collected;
    Collect("", collected);
    for (const char* property :
         {"FreePhysicalMemory", "FreeVirtualMemory", "TotalVisibleMemorySize", "TotalSwapSpaceSize",
          "TotalVirtualMemorySize", "NumberOfProcesses", "NumberOfUsers", "PageSize", "KernelRelease",
          "CSName", "LastBootUpTime", "Version"}) {
        EXPECT_EQ(collected.Get(system, property), "absent") << property;
    }
}

TEST(OperatingSystem, AddsUpOnlyCompleteValues) {
    EXPECT_EQ(Get("/proc/meminfo:\n| MemFree: 5 kB\n| SwapFree: 7 kB\n", "FreeVirtualMemory"), "12");
    EXPECT_EQ(Get("/proc/meminfo:\n| MemFree: 5 kB\n", "FreeVirtualMemory"), "absent");
}

TEST(OperatingSystem, PrefersTheAdministratorsNameFileToTheVendors) {
    EXPECT_EQ(Get("/etc/os-release = NAME=Etc\n/usr/lib/os-release = NAME=Usr\n", "ElementName"), "Etc");
    EXPECT_EQ(Get("/usr/lib/os-release = NAME=Usr\n", "ElementName"), "Usr");
}

TEST(OperatingSystem, FallsBackToTheKernelsNumberAsVersion) {
    EXPECT_EQ(Get("@KernelRelease = 6.1.0-13-amd64\n", "Version"), "6.1.0");
    EXPECT_EQ(Get("@KernelRelease = 6.1.0-13-amd64\n/etc/os-release = VERSION_ID=12\n", "Version"), "12");
    EXPECT_EQ(Get("@KernelRelease = custom\n", "Version"), "absent");
}

TEST(OperatingSystem, FallsBackToTheKernelsOwnLineForItsRelease) {
    const std::string line = "/proc/version = Linux version 5.14.0-1 (builder@example.org) #1 SMP\n";
    EXPECT_EQ(Get(line, "KernelRelease"), "5.14.0-1");
    EXPECT_EQ(Get(line, "Version"), "5.14.0");
    EXPECT_EQ(Get(line, "Description"), "Linux 5.14.0-1");
    EXPECT_EQ(Get("@KernelRelease = 6.1.0\n" + line, "KernelRelease"), "6.1.0");
}

TEST(OperatingSystem, FallsBackToOlderReleaseFilesForItsName) {
    const std::string redHat = "/etc/redhat-release = CentOS release 6.9 (Final)\n";
    const std::string debian = "/etc/debian_version = 7.8\n";
    EXPECT_EQ(Get(redHat, "ElementName"), "CentOS release 6.9 (Final)");
    EXPECT_EQ(Get(redHat, "Version"), "6.9");
    EXPECT_EQ(Get("/etc/SuSE-release:\n| Sample 11 (x86_64)\n| VERSION = 11\n| PATCHLEVEL = 3\n", "Version"),
              "11.3");
    EXPECT_EQ(Get(debian, "ElementName"), "Debian GNU/Linux 7.8");
    EXPECT_EQ(Get(debian, "Version"), "7.8");
    EXPECT_EQ(Get("@KernelRelease = 3.2.0-4\n/etc/debian_version = wheezy/sid\n", "Version"), "3.2.0");
    EXPECT_EQ(Get("/etc/os-release = NAME=New\n" + redHat + debian, "ElementName"), "New");
}

TEST(OperatingSystem, CountsFoldersOfDigitsAsProcesses) {
    EXPECT_EQ(
        Get("/proc/1/\n/proc/2000/\n/proc/self -> 1\n/proc/12a/\n/proc/meminfo = x\n", "NumberOfProcesses"),
        "2");
}

TEST(OperatingSystem, GivesItsStartInTheLocalTimeOfThatMoment) {
    EXPECT_EQ(Get("/proc/stat = btime 1700000000\n@UtcOffsetMinutes = 120\n", "LastBootUpTime"),
              "20231115001320.000000+120");
}

TEST(OperatingSystem, GivesItsStartInTheCollectionsZoneIfNoOtherIsKnown) {
    EXPECT_EQ(Get("/proc/stat = btime 1700000000\n", "LastBootUpTime"), "20231114231320.000000+060");
}

TEST(OperatingSystem, LeavesOutTheClockIfTheMomentIsUnknown) {
    TMachine machine = ParseMachineTree("/proc/stat = btime 1700000000\n");
    TCollected collected;
    collected.reports = CollectAll({machine.files, machine.calls, collected.target, std::nullopt});
    EXPECT_EQ(collected.Get(system, "LocalDateTime"), "absent");
    EXPECT_EQ(collected.Get(system, "CurrentTimeZone"), "absent");
    EXPECT_EQ(collected.Get(system, "LastBootUpTime"), "20231114221320.000000+000");
}

TEST(MakeCimTime, CrossesDaysYearsAndLeapDays) {
    EXPECT_EQ(MakeCimTime(0, 0).ToString(), "19700101000000.000000+000");
    EXPECT_EQ(MakeCimTime(0, -1).ToString(), "19691231235900.000000-001");
    EXPECT_EQ(MakeCimTime(951782399, 0).ToString(), "20000228235959.000000+000");
    EXPECT_EQ(MakeCimTime(951782400, 0).ToString(), "20000229000000.000000+000");
    EXPECT_EQ(MakeCimTime(1709251199, 345).ToString(), "20240301054459.000000+345");
}

}  // namespace
}  // namespace NVORHOST
