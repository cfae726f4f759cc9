// Sockets of the firmware's table joined with the kernel's packages.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr const char* processor = "KELSG_Processor";

// A populated socket with a name and a speed at start, in MHz as two hexadecimal bytes.
std::string Socket(const std::string& name, const std::string& speed = "34 08") {
    return "| 4: 01 03 b3 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 " + speed + " 41 00 \"" + name +
           "\"\n";
}

std::string Sockets(const std::string& lines) {
    return "/sys/firmware/dmi/tables/DMI smbios:\n" + lines;
}

std::string Package(int cpu, int id, int maxMHz) {
    const std::string folder = "/sys/devices/system/cpu/cpu" + std::to_string(cpu);
    return folder + "/topology/physical_package_id = " + std::to_string(id) + "\n" + folder +
           "/cpufreq/cpuinfo_max_freq = " + std::to_string(maxMHz) + "000\n";
}

TEST(Processors, AreOneForEachPopulatedSocket) {
    TCollected collected;
    Collect(Sockets(Socket("CPU1") +
                    "| 4: 01 03 b3 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                    "\"CPU2\"\n" +
                    "| 4: 01 04 b3 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 41 00 \"DSP\"\n"),
            collected);
    EXPECT_THAT(collected.GetAll(processor, "DeviceID"), ElementsAre("CPU1"));
}

TEST(Processors, AreJoinedInOrderWhenThereAreAsManyPackagesAsSockets) {
    TCollected collected;
    Collect(Sockets(Socket("A") + Socket("B")) + Package(0, 3, 3000) + Package(1, 7, 4000), collected);
    EXPECT_THAT(collected.GetAll(processor, "DeviceID"), ElementsAre("A", "B"));
    EXPECT_THAT(collected.GetAll(processor, "MaxClockSpeed"), ElementsAre("3000", "4000"));
    EXPECT_THAT(collected.GetAll(processor, "CurrentClockSpeed"), ElementsAre("2100", "2100"));
}

TEST(Processors, AreNotJoinedWhenSocketsAndPackagesDiffer) {
    TCollected collected;
    Collect(Sockets(Socket("A") + Socket("B")) + Package(0, 0, 3000), collected);
    EXPECT_THAT(collected.GetAll(processor, "DeviceID"), ElementsAre("A", "B"));
    EXPECT_THAT(collected.GetAll(processor, "MaxClockSpeed"), ElementsAre("absent", "absent"));
}

// A populated socket with its kind and the number of its enabled cores as hexadecimal digits.
std::string SocketOfKind(const std::string& kind, const std::string& cores) {
    return "| 4: 01 03 b3 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 41 " + kind +
           " 00 00 00 00 00 00 00 00 00 10 " + cores + " \"CPU\"\n";
}

constexpr const char* cpuInfo =
    "/proc/cpuinfo:\n| processor : 0\n| vendor_id : GenuineIntel\n| model name : Model\n| stepping : 1\n"
    "| microcode : 0xb00002e\n| cpu cores : 6\n| physical id : 0\n";

TEST(Processors, HaveCoresSteppingSocketAndMicrocode) {
    TCollected collected;
    Collect(Sockets(SocketOfKind("2b", "08")) + cpuInfo + Package(0, 0, 3000), collected);
    EXPECT_THAT(collected.GetAll(processor, "NumberOfEnabledCores"), ElementsAre("8"));
    EXPECT_THAT(collected.GetAll(processor, "Stepping"), ElementsAre("1"));
    EXPECT_THAT(collected.GetAll(processor, "UpgradeMethod"), ElementsAre("43"));
    EXPECT_THAT(collected.GetAll(processor, "FirmwareVersion"), ElementsAre("0xb00002e"));
}

TEST(Processors, HaveTheCoresAndThreadsOfTheTable) {
    TCollected collected;
    Collect(
        Sockets("| 4: 01 03 b3 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 41 43 00 00 00 00 00 00 00 "
                "00 00 10 08 20 00 00 00 00 10 00 08 00 20 00 10 00 02 \"CPU\" \"LGA4677\"\n"),
        collected);
    EXPECT_EQ(collected.Get(processor, "NumberOfProcessorCores"), "16");
    EXPECT_EQ(collected.Get(processor, "NumberOfEnabledCores"), "8");
    EXPECT_EQ(collected.Get(processor, "NumberOfHardwareThreads"), "32");
    EXPECT_EQ(collected.Get(processor, "SocketType"), "LGA4677");
}

TEST(Processors, HaveTheNodesOfTheirPackage) {
    TCollected collected;
    Collect(Package(0, 0, 3000) + Package(1, 0, 3000) + Package(2, 1, 3000) + Package(3, 2, 3000) +
                "/sys/devices/system/cpu/cpu0/topology/package_cpus_list = 0-1\n"
                "/sys/devices/system/node/node0/cpulist = 0-1\n"
                "/sys/devices/system/node/node1/cpulist = 0\n"
                "/sys/devices/system/node/node10/cpulist = 2\n"
                "/sys/devices/system/node/node3/cpulist:\n"
                "/sys/devices/system/node/possible = 0-10\n",
            collected);
    EXPECT_THAT(collected.GetAll(processor, "NUMANodes"), ElementsAre("{0, 1}", "{10}", "absent"));
    EXPECT_THAT(collected.GetAll(processor, "NumberOfProcessorCores"),
                ElementsAre("absent", "absent", "absent"));
    EXPECT_THAT(collected.GetAll(processor, "NumberOfHardwareThreads"),
                ElementsAre("absent", "absent", "absent"));
}

TEST(Processors, HaveTheKernelsNumberOfCoresWithoutATable) {
    TCollected collected;
    Collect(cpuInfo + Package(0, 0, 3000), collected);
    EXPECT_THAT(collected.GetAll(processor, "NumberOfEnabledCores"), ElementsAre("6"));
    EXPECT_THAT(collected.GetAll(processor, "Stepping"), ElementsAre("1"));
    EXPECT_THAT(collected.GetAll(processor, "UpgradeMethod"), ElementsAre("absent"));
    EXPECT_THAT(collected.GetAll(processor, "FirmwareVersion"), ElementsAre("0xb00002e"));
}

TEST(Processors, HaveNoMicrocodeWhenSocketsAndPackagesDiffer) {
    TCollected collected;
    Collect(Sockets(SocketOfKind("02", "00") + Socket("B")) + cpuInfo + Package(0, 0, 3000), collected);
    EXPECT_THAT(collected.GetAll(processor, "FirmwareVersion"), ElementsAre("absent", "absent"));
    EXPECT_THAT(collected.GetAll(processor, "NumberOfEnabledCores"), ElementsAre("absent", "absent"));
    EXPECT_THAT(collected.GetAll(processor, "UpgradeMethod"), ElementsAre("absent", "absent"));
}

std::string SocketWithStatus(const std::string& name, const std::string& status) {
    return "| 4: 01 03 b3 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 34 08 " + status + " 00 \"" + name +
           "\"\n";
}

std::vector<std::string> Statuses(const std::string& tree) {
    TCollected collected;
    Collect(tree, collected);
    return collected.GetAll(processor, "OperationalStatus");
}

std::string Cpu(int number, const std::string& file, const std::string& value) {
    return "/sys/devices/system/cpu/cpu" + std::to_string(number) + "/" + file + " = " + value + "\n";
}

TEST(Processors, PreferTheKernelsOnlineStateToTheFirmwaresIdleState) {
    EXPECT_THAT(Statuses(Sockets(SocketWithStatus("A", "41") + SocketWithStatus("B", "44")) +
                         Package(0, 0, 3000) + Package(1, 1, 3000) + Cpu(1, "online", "1")),
                ElementsAre("{2}", "{2}"));
}

TEST(Processors, AreDormantOnlyWithoutAPackageOfTheKernel) {
    const std::string sockets = Sockets(SocketWithStatus("A", "41") + SocketWithStatus("B", "44"));
    EXPECT_THAT(Statuses(sockets), ElementsAre("{2}", "{15}"));
    EXPECT_THAT(Statuses(sockets + Package(0, 0, 3000)), ElementsAre("{2}", "{15}"));
}

TEST(Processors, AreStoppedWhenAllOfAPackageAreOffline) {
    const std::string tree = Sockets(SocketWithStatus("A", "41") + SocketWithStatus("B", "41")) +
                             Package(0, 0, 3000) + Package(1, 1, 3000) + Package(2, 0, 3000) +
                             Package(3, 1, 3000) + Cpu(1, "online", "0");
    EXPECT_THAT(Statuses(tree), ElementsAre("{2}", "{2}"));
    EXPECT_THAT(Statuses(tree + Cpu(3, "online", "0")), ElementsAre("{2}", "{10}"));
}

// The kernel removes the topology of an offline processor.
TEST(Processors, AreStoppedWhenTheirPackageIsHiddenWithAllItsProcessors) {
    const std::string sockets = Sockets(SocketWithStatus("A", "41") + SocketWithStatus("B", "44"));
    EXPECT_THAT(Statuses(sockets + Package(0, 0, 3000) + Cpu(1, "online", "0")), ElementsAre("{2}", "{10}"));
    EXPECT_THAT(Statuses(sockets + Package(0, 1, 3000) + Cpu(1, "online", "0")), ElementsAre("{10}", "{2}"));
    // No socket has the number of this package.
    EXPECT_THAT(Statuses(sockets + Package(0, 3, 3000) + Cpu(1, "online", "0")), ElementsAre("{2}", "{15}"));
}

TEST(Processors, HaveTheKernelsStatusWithoutATable) {
    EXPECT_THAT(Statuses(Package(0, 0, 3000) + Package(1, 1, 3000) + Cpu(1, "online", "0")),
                ElementsAre("{2}", "{10}"));
}

constexpr const char* twoModels =
    "/proc/cpuinfo:\n"
    "| processor : 0\n| vendor_id : Maker\n| cpu family : 6\n| model : 58\n| model name : Example  CPU 9\n"
    "| stepping : 9\n"
    "| processor : 1\n| vendor_id : Maker\n| cpu family : 6\n| model : 58\n| model name : Example  CPU ";

TEST(Processors, HaveTheNameOfTheirOnlyModelWhenSocketsAndPackagesDiffer) {
    TCollected collected;
    Collect(Sockets(Socket("A") + Socket("B")) + twoModels + "9\n| stepping : 9\n" + Package(0, 0, 3000),
            collected);
    EXPECT_THAT(collected.GetAll(processor, "ElementName"), ElementsAre("Example CPU 9", "Example CPU 9"));
    EXPECT_THAT(collected.GetAll(processor, "Description"),
                ElementsAre("Central processor, Maker family 6 model 58 stepping 9",
                            "Central processor, Maker family 6 model 58 stepping 9"));
}

TEST(Processors, HaveNoNameOfSeveralModelsWhenSocketsAndPackagesDiffer) {
    TCollected collected;
    Collect(Sockets(Socket("A") + Socket("B")) + twoModels + "8\n| stepping : 9\n" + Package(0, 0, 3000),
            collected);
    EXPECT_THAT(collected.GetAll(processor, "ElementName"), ElementsAre("A", "B"));
    EXPECT_THAT(collected.GetAll(processor, "Description"),
                ElementsAre("Central processor", "Central processor"));
}

TEST(Processors, AreTheKernelsPackagesWithoutATable) {
    TCollected collected;
    Collect(Package(0, 1, 3000) + Package(1, 0, 4000), collected);
    EXPECT_THAT(collected.GetAll(processor, "DeviceID"), ElementsAre("package 0", "package 1"));
    EXPECT_THAT(collected.GetAll(processor, "MaxClockSpeed"), ElementsAre("4000", "3000"));
}

TEST(Processors, AreCountedByPhysicalIdWithoutATopologyInSysfs) {
    TCollected collected;
    Collect(
        "/proc/cpuinfo:\n"
        "| processor : 0\n| physical id : 0\n"
        "| processor : 1\n| physical id : 1\n"
        "| processor : 2\n| physical id : 0\n",
        collected);
    EXPECT_THAT(collected.GetAll(processor, "DeviceID"), ElementsAre("package 0", "package 1"));
}

TEST(Processors, HaveTheirPackagesInTheKeyIfTheirNamesAreEqual) {
    TCollected collected;
    Collect(Sockets(Socket("CPU") + Socket("CPU")) + Package(0, 0, 3000) + Package(1, 1, 3000), collected);
    EXPECT_THAT(collected.GetAll(processor, "DeviceID"), ElementsAre("CPU@package 0", "CPU@package 1"));
    EXPECT_THAT(collected.GetReport("processor").notes,
                ElementsAre("2 processors share the key CPU; their positions tell them apart"));
}

TEST(Processors, HaveNoWidthWithoutASource) {
    const auto width = [](const std::string& tree) {
        TCollected collected;
        Collect(tree, collected);
        return collected.Get(processor, "AddressWidth");
    };
    EXPECT_EQ(width("/proc/cpuinfo:\n| processor : 0\n| flags : fpu lm\n"), "64");
    EXPECT_EQ(width("/proc/cpuinfo:\n| processor : 0\n| flags : fpu\n"), "32");
    EXPECT_EQ(width("/proc/cpuinfo:\n| processor : 0\n| Features : fp asimd\n"), "absent");
    EXPECT_EQ(width(Sockets(Socket("A"))), "absent");
    EXPECT_EQ(width(Sockets(Socket("A")) + "/proc/cpuinfo:\n| processor : 0\n| flags : lm\n"), "64");
}

}  // namespace
}  // namespace NVORHOST
