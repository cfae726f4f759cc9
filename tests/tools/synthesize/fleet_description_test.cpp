#include "tools/synthesize/fleet_description.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace NSYNTHESIS {
namespace {

std::string FaultOf(const std::string& text) {
    try {
        (void)ParseFleetDescription(text);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "none";
}

TEST(ParseFleetDescription, ReadsFleetModelsFaultsAndChanges) {
    const auto fleet = ParseFleetDescription(
        "# comment\n[fleet]\nseed = 7\nmachines = 20 # comment\ndays = 3\nfirst-day = 2026-02-28\n"
        "[model RackStar 2200]\nshare = 3\nmodules = 4\nprocessor = Example CPU @ 2.10GHz\n"
        "[fault missing-module]\nrate = 0.25 %\nmodel = RackStar 2200\n"
        "[change moved-disk]\nday = 2\nmachine = 0\nto = 19\n");
    EXPECT_EQ(fleet.seed, 7U);
    EXPECT_EQ(fleet.machines, 20U);
    EXPECT_EQ(fleet.days, 3U);
    EXPECT_EQ(fleet.firstDay, std::chrono::sys_days(std::chrono::year(2026) / 2 / 28));
    ASSERT_EQ(fleet.models.size(), 1U);
    EXPECT_EQ(fleet.models[0].name, "RackStar 2200");
    EXPECT_EQ(fleet.models[0].share, 3U);
    EXPECT_EQ(fleet.models[0].modules, 4U);
    EXPECT_EQ(fleet.models[0].processor, "Example CPU @ 2.10GHz");
    ASSERT_EQ(fleet.faults.size(), 1U);
    EXPECT_EQ(fleet.faults[0].kind, EFault::missingModule);
    EXPECT_EQ(fleet.faults[0].ratePerMillion, 2500U);
    EXPECT_EQ(fleet.faults[0].model, "RackStar 2200");
    ASSERT_EQ(fleet.changes.size(), 1U);
    EXPECT_EQ(fleet.changes[0].kind, EChangeKind::movedDisk);
    EXPECT_EQ(fleet.changes[0].day, 2U);
    EXPECT_EQ(fleet.changes[0].to, 19U);
}

TEST(ParseFleetDescription, RejectsWhatItDoesNotKnow) {
    EXPECT_EQ(FaultOf("[fleet]\nmachine = 20\n"), "line 2: unknown key 'machine'");
    EXPECT_EQ(FaultOf("[disks]\n"), "line 1: unknown section 'disks'");
    EXPECT_EQ(FaultOf("[fault fire]\n"), "line 1: unknown kind 'fire'");
    EXPECT_EQ(FaultOf("seed = 1\n"), "line 1: a key before the first section");
}

TEST(ParseFleetDescription, RejectsMalformedValues) {
    EXPECT_EQ(FaultOf("[fleet]\nmachines = many\n"), "line 2: 'many' is not a number up to 10000000");
    EXPECT_EQ(FaultOf("[fleet]\nfirst-day = 2026-02-30\n"),
              "line 2: '2026-02-30' is not a date such as 2026-03-01");
    EXPECT_EQ(FaultOf("[fault missing-module]\nrate = 1\n"), "line 2: a rate ends in %");
}

TEST(ParseFleetDescription, RejectsFleetsThatCannotBe) {
    EXPECT_EQ(FaultOf("[fleet]\n[model A]\n"), "a fleet has at least one machine and one day");
    EXPECT_EQ(FaultOf("[fleet]\nmachines = 1\n"), "a fleet has at least one model");
    EXPECT_EQ(FaultOf("[fleet]\nmachines = 1\n[model A]\nslots = 2\nmodules = 3\n"),
              "a model has more modules than slots");
    EXPECT_EQ(FaultOf("[fleet]\nmachines = 1\n[model A]\n[change moved-disk]\nday = 1\nmachine = 1\n"),
              "the machine of an event does not exist");
}

}  // namespace
}  // namespace NSYNTHESIS
