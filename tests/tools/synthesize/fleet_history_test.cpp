#include "tools/synthesize/fleet_history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace NSYNTHESIS {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::Le;

constexpr char twoMachines[] =
    "[fleet]\nmachines = 2\ndays = 3\n[model A]\ndisks = 1\nslots = 2\nmodules = 1\n";

std::vector<std::string> ListDisks(const TFleetHistory& history) {
    std::vector<std::string> serials;
    for (const TMachineState& machine : history.GetMachines()) {
        for (const TDisk& disk : machine.disks) {
            serials.push_back(MakeSerialNumber(disk));
        }
    }
    return serials;
}

TEST(TFleetHistory, MovesADiskOnItsDay) {
    const auto fleet = ParseFleetDescription(std::string(twoMachines) +
                                             "[change moved-disk]\nday = 3\nmachine = 0\nto = 1\n");
    TFleetHistory history(fleet);
    EXPECT_THAT(ListDisks(history), ElementsAre("ZD0000000", "ZD0000001"));
    history.GoToNextDay();
    EXPECT_THAT(ListDisks(history), ElementsAre("ZD0000000", "ZD0000001"));
    history.GoToNextDay();
    EXPECT_THAT(ListDisks(history), ElementsAre("ZD0000002", "ZD0000000"));
}

TEST(TFleetHistory, EmptiesTheSlotOfAStolenModule) {
    const auto fleet =
        ParseFleetDescription(std::string(twoMachines) + "[change stolen-module]\nday = 2\nmachine = 1\n");
    TFleetHistory history(fleet);
    const auto count = [&] {
        return std::ranges::count_if(history.GetMachines()[1].slots,
                                     [](const auto& slot) { return slot.has_value(); });
    };
    EXPECT_EQ(count(), 1);
    history.GoToNextDay();
    EXPECT_EQ(count(), 0);
}

TEST(TFleetHistory, ChangesSerialNumberAndUuidWithTheBoard) {
    const auto fleet =
        ParseFleetDescription(std::string(twoMachines) + "[change replaced-board]\nday = 2\nmachine = 1\n");
    TFleetHistory history(fleet);
    EXPECT_EQ(MakeSerialNumber(history.GetMachines()[1]), "EX0000001");
    EXPECT_EQ(MakeUuid(history.GetMachines()[1]), "00C0FFEE-0000-4000-8000-000000000001");
    history.GoToNextDay();
    EXPECT_EQ(MakeSerialNumber(history.GetMachines()[1]), "EX0000001B");
    EXPECT_EQ(MakeUuid(history.GetMachines()[1]), "00C0FFEE-0001-4000-8000-000000000001");
}

TEST(TFleetHistory, DrawsModelsByShareAndFaultsByRate) {
    const auto fleet = ParseFleetDescription(
        "[fleet]\nmachines = 10000\n[model A]\nshare = 3\n[model B]\n[fault older-firmware]\nrate = 2 %\n");
    const TFleetHistory history(fleet);
    const auto& machines = history.GetMachines();
    EXPECT_THAT(
        std::ranges::count_if(machines, [](const auto& machine) { return machine.model->name == "A"; }),
        AllOf(Ge(7300), Le(7700)));
    EXPECT_THAT(std::ranges::count_if(machines, &TMachineState::hasOldFirmware), AllOf(Ge(150), Le(250)));
}

}  // namespace
}  // namespace NSYNTHESIS
