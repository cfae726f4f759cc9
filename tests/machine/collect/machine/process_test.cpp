// KELSG_Process: one instance for each process, only on request.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::Each;
using testing::ElementsAre;

constexpr char process[] = "KELSG_Process";

constexpr char tree[] =
    "/proc/stat = btime 1700000000\n"
    "/proc/2/stat = 2 (kthreadd) S 0 0 0 0 -1 2129984 0 0 0 0 0 0 0 0 20 0 1 0 7 0 0\n"
    "/proc/17/stat = 17 (tmux: server) R 1 17 17 0 -1 4194560 0 0 0 0 0 0 0 0 20 0 1 0 250 0 0\n"
    "/proc/9/stat = 9 (watchdog (0)) D 2 0 0 0 -1 69238848 0 0 0 0 0 0 0 0 -100 0 1 0 0 0 0\n"
    "/proc/10/stat = 10 (deadline) X 2 0 0 0 -1 0 0 0 0 0 0 0 0 0 -101 0 1 0 0 0 0\n"
    "/proc/11/\n"
    "/proc/sys/kernel/ostype = Linux\n";

void CollectAlone(const TMachine& machine, TCollected& collected) {
    collected.reports = CollectAll({machine.files, machine.calls, collected.target, CollectionTime()},
                                   ChooseCollectors({{"process"}, {}}));
}

TEST(Process, IsCollectedOnlyOnRequest) {
    TCollected collected;
    Collect(tree, collected);
    EXPECT_EQ(collected.target.FindClass(process), nullptr);
}

TEST(Process, IsListedInTheOrderOfItsNumber) {
    TCollected collected;
    CollectAlone(ParseMachineTree(tree), collected);
    EXPECT_THAT(collected.GetAll(process, "ProcessID"), ElementsAre("2", "9", "10", "17"));
    EXPECT_THAT(collected.GetAll(process, "ElementName"),
                ElementsAre("kthreadd", "watchdog (0)", "deadline", "tmux: server"));
    EXPECT_THAT(collected.GetAll(process, "Description"),
                ElementsAre("Kernel thread", "Kernel thread", "Process", "Process"));
}

TEST(Process, HasStateAndPriorityInTheKernelsScale) {
    TCollected collected;
    CollectAlone(ParseMachineTree(tree), collected);
    EXPECT_THAT(collected.GetAll(process, "ExecutionState"), ElementsAre("4", "4", "7", "3"));
    EXPECT_THAT(collected.GetAll(process, "Priority"), ElementsAre("120", "0", "absent", "120"));
    EXPECT_THAT(collected.GetAll(process, "TerminationDate"), Each("absent"));
}

TEST(Process, ComputesItsStartFromTicksAfterTheBoot) {
    TMachine machine = ParseMachineTree(tree);
    machine.calls.clockTicksPerSecond = 50;
    TCollected collected;
    CollectAlone(machine, collected);
    // 1700000000 is 2023-11-14 22:13:20 UTC; the collection's time is an hour ahead of it.
    EXPECT_EQ(collected.Get(process, "CreationDate", 3), "20231114231325.000000+060");
    EXPECT_EQ(collected.Get(process, "CreationDate", 1), "20231114231320.000000+060");
}

TEST(Process, HasNoStartIfTheBootIsUnknown) {
    TCollected collected;
    CollectAlone(
        ParseMachineTree("/proc/17/stat = 17 (a) R 1 17 17 0 -1 0 0 0 0 0 0 0 0 0 20 0 1 0 250 0 0\n"),
        collected);
    EXPECT_THAT(collected.GetAll(process, "CreationDate"), ElementsAre("absent"));
}

}  // namespace
}  // namespace NVORHOST
