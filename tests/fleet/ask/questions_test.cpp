// The answers to questions about small fleets.
#include "fleet/ask/fleet_summary.h"
#include "fleet/ask/machine_changes.h"
#include "fleet/ask/machine_inventory.h"
#include "fleet/ask/machine_list.h"
#include "fleet/ask/outliers.h"
#include "fleet/ask/part_ages.h"
#include "fleet/ask/part_places.h"
#include "fleet/ask/sql_answer.h"
#include "tests/fleet/ask/made_fleet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace NFLEET {
namespace {

using NINVENTORY::TResource;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

TResource MakeModule(const std::string& slot, const std::string& serial, const std::string& speed = "2400") {
    return MakeResource("PhysicalMemory", slot,
                        {{"Name", "Example Memory EX16"},
                         {"SerialNumber", serial},
                         {"Tag", slot},
                         {"Capacity", "17179869184"},
                         {"Speed", speed}});
}

TResource MakeDisk(const std::string& serial, const std::string& status = "2") {
    return MakeResource("DiskDrive", serial,
                        {{"Name", "SAMPLE SM600"},
                         {"DeviceID", serial},
                         {"MaxMediaSize", "600127266"},
                         {"OperationalStatus", status}});
}

// A disk that is known by its serial number.
TResource MakeNumberedDisk(const std::string& serial) {
    TResource disk = MakeDisk("port 1");
    disk.properties.push_back({"SerialNumber", "string", NINVENTORY::EShape::scalar, {serial}});
    disk.id = ToText(MakeDigest(serial));
    return disk;
}

std::string FailureOf(const std::function<void()>& ask) {
    try {
        ask();
    } catch (const TQuestionError& error) {
        return error.what();
    }
    return "none";
}

// ---- machines

TEST(ListMachines, SortsByNameAndKeepsThoseThatMeetEveryCondition) {
    TMadeFleet fleet;
    fleet.Add("web-2", "RackStar", monday, {MakeModule("A1", "M1", "2400")});
    fleet.Add("web-1", "RackStar", monday, {MakeModule("A1", "M2", "1200")});
    fleet.Add("db-1", "BladeStar", monday + day, {MakeDisk("Z1")});
    IFleetStore& store = fleet.GetStore();
    const auto list = [&](const std::vector<std::string>& texts) {
        std::vector<NINVENTORY::TCondition> conditions;
        conditions.reserve(texts.size());
        for (const std::string& text : texts) {
            conditions.push_back(NINVENTORY::ParseCondition(text));
        }
        return ShowRows(ListMachines(store, conditions));
    };
    const std::string db =
        "db-1 | BladeStar | Example Servers | S-db-1 | 2026-03-03T03:00:00Z | 2026-03-03T03:00:00Z | -\n";
    const std::string web1 =
        "web-1 | RackStar | Example Servers | S-web-1 | 2026-03-02T03:00:00Z | 2026-03-02T03:00:00Z | -\n";
    const std::string web2 =
        "web-2 | RackStar | Example Servers | S-web-2 | 2026-03-02T03:00:00Z | 2026-03-02T03:00:00Z | -\n";
    EXPECT_EQ(list({}), db + web1 + web2);
    EXPECT_EQ(list({"model=RackStar"}), web1 + web2);
    EXPECT_EQ(list({"name~^web", "serial=S-web-2"}), web2);
    EXPECT_EQ(list({"PhysicalMemory.Speed=1200"}), web1);
    EXPECT_EQ(list({"PhysicalMemory.SerialNumber=M1"}), web2);
    EXPECT_EQ(list({"DiskDrive.DeviceID~^Z"}), db);
    EXPECT_EQ(list({"DiskDrive.DeviceID=Z2"}), "");
    EXPECT_EQ(FailureOf([&] { (void)list({"color=blue"}); }),
              "'color' is not TYPE.PROPERTY, nor one of name, vendor, model, serial, uuid, key");
}

TEST(ListMachines, LooksForIdentifyingValuesInPresentResourcesOnly) {
    TMadeFleet fleet;
    fleet.Add("web-1", "RackStar", monday, {MakeDisk("Z1")});
    fleet.Add("web-2", "RackStar", monday, {MakeModule("A1", "Z1"), MakeDisk("Z2")});
    fleet.Add("web-1", "RackStar", monday + day, {MakeDisk("Z3")});
    fleet.Add("web-2", "RackStar", monday + day, {MakeDisk("Z1")}, EScope::snapshot);
    IFleetStore& store = fleet.GetStore();
    const auto list = [&](const std::string& text) {
        std::string names;
        const NINVENTORY::TCondition conditions[] = {NINVENTORY::ParseCondition(text)};
        for (const auto& row : ListMachines(store, conditions).rows) {
            names += std::get<std::string>(row[0]) + " ";
        }
        return names;
    };
    for (const std::string sign : {"=", "~"}) {
        EXPECT_EQ(list("DiskDrive.DeviceID" + sign + "Z1"), "web-2 ") << sign;
        EXPECT_EQ(list("DiskDrive.DeviceID" + sign + "Z2"), "") << sign;
        EXPECT_EQ(list("DiskDrive.DeviceID" + sign + "Z3"), "web-1 ") << sign;
        EXPECT_EQ(list("PhysicalMemory.SerialNumber" + sign + "Z1"), "") << sign;
    }
}

TEST(ListMachines, NamesAPropertyThatNoPartHas) {
    TMadeFleet fleet;
    const auto getEmptyText = [&](const std::string& text) {
        const NINVENTORY::TCondition conditions[] = {NINVENTORY::ParseCondition(text)};
        return ListMachines(fleet.GetStore(), conditions).emptyText;
    };
    EXPECT_EQ(getEmptyText("DiskDrive.Model=SM600"), "no machines");
    fleet.Add("db-1", "BladeStar", monday, {MakeDisk("Z1")});
    EXPECT_EQ(getEmptyText("DiskDrive.Model=SM600"), "no machines: no part has the property DiskDrive.Model");
    EXPECT_EQ(getEmptyText("Disk.DeviceID=Z1"), "no machines: no part has the property Disk.DeviceID");
    EXPECT_EQ(getEmptyText("DiskDrive.DeviceID=Z2"), "no machines");
    EXPECT_EQ(getEmptyText("name=Z2"), "no machines");
}

TEST(FindMachine, AcceptsNameSerialNumberKeyAndDigits) {
    TMadeFleet fleet;
    fleet.Add("web-1", "RackStar", monday, {});
    fleet.Add("web-2", "RackStar", monday, {});
    IFleetStore& store = fleet.GetStore();
    EXPECT_EQ(FindMachine(store, "web-1").key, "uuid:web-1");
    EXPECT_EQ(FindMachine(store, "S-web-2").key, "uuid:web-2");
    EXPECT_EQ(FindMachine(store, "uuid:web-2").key, "uuid:web-2");
    EXPECT_EQ(FindMachine(store, ToText(MakeDigest("uuid:web-1")).substr(0, 8)).key, "uuid:web-1");
    EXPECT_THAT(FailureOf([&] { (void)FindMachine(store, "web-3"); }),
                HasSubstr("there is no machine 'web-3' in "));
}

TEST(FindMachine, NamesTheMachinesOfAnAmbiguousText) {
    TMadeFleet fleet;
    fleet.Add("db-1", "S-web-1", monday, {});
    fleet.Add("S-db-1", "RackStar", monday, {});
    IFleetStore& store = fleet.GetStore();
    EXPECT_EQ(FailureOf([&] { (void)FindMachine(store, "S-db-1"); }),
              "'S-db-1' could be one of uuid:S-db-1, uuid:db-1");
}

TEST(ListStaleMachines, ListsTheOldestFirst) {
    TMadeFleet fleet;
    fleet.Add("new", "RackStar", monday + 2 * day, {});
    fleet.Add("old", "RackStar", monday, {});
    fleet.Add("older", "RackStar", monday - day, {});
    IFleetStore& store = fleet.GetStore();
    EXPECT_EQ(
        ShowRows(ListStaleMachines(store, monday + day)),
        "older | RackStar | Example Servers | S-older | 2026-03-01T03:00:00Z | 2026-03-01T03:00:00Z | -\n"
        "old | RackStar | Example Servers | S-old | 2026-03-02T03:00:00Z | 2026-03-02T03:00:00Z | -\n");
    EXPECT_EQ(ShowRows(ListStaleMachines(store, monday - day)), "");
}

// ---- changes

TEST(ListHistory, PairsResourcesByTheRulesOfComparisons) {
    TMadeFleet fleet;
    fleet.Add("web", "RackStar", monday, {MakeModule("A1", "M1"), MakeModule("A2", "M2"), MakeDisk("Z1")});
    fleet.Add("web", "RackStar", monday + day,
              {MakeModule("A1", "M3"), MakeModule("A2", "M2"), MakeDisk("Z1", "3")});
    fleet.Add("web", "RackStar", monday + 2 * day,
              {MakeModule("A1", "M3"), MakeDisk("Z1", "3"), MakeDisk("Z2")});
    IFleetStore& store = fleet.GetStore();
    EXPECT_EQ(
        ShowRows(ListHistory(store, FindMachine(store, "web"))),
        "2026-03-03T03:00:00Z | replaced | memory module 16 GiB in A1 | M3 | SerialNumber | M1 | M3\n"
        "2026-03-03T03:00:00Z | changed | disk SAMPLE SM600 600 GB | Z1 | OperationalStatus | OK | Degraded\n"
        "2026-03-04T03:00:00Z | removed | memory module 16 GiB in A2 | M2 | - | - | -\n"
        "2026-03-04T03:00:00Z | added | disk SAMPLE SM600 600 GB | Z2 | - | - | -\n");
}

TEST(ListHistory, IgnoresWhatChangesByItself) {
    TMadeFleet fleet;
    fleet.Add("web", "RackStar", monday,
              {MakeResource("OperatingSystem", "os", {{"FreePhysicalMemory", "1"}})});
    fleet.Add("web", "RackStar", monday + day,
              {MakeResource("OperatingSystem", "os", {{"FreePhysicalMemory", "2"}})});
    IFleetStore& store = fleet.GetStore();
    EXPECT_EQ(ShowRows(ListHistory(store, FindMachine(store, "web"))), "");
}

TEST(ListChanges, ContainsThoseAtTheTimeAndAfterItOfAllMachines) {
    TMadeFleet fleet;
    for (const std::string machine : {"web-2", "web-1"}) {
        fleet.Add(machine, "RackStar", monday, {MakeDisk("Z-" + machine)});
        fleet.Add(machine, "RackStar", monday + day, {MakeDisk("Z-" + machine, "3")});
    }
    IFleetStore& store = fleet.GetStore();
    EXPECT_EQ(ShowRows(ListChanges(store, monday + day)),
              "2026-03-03T03:00:00Z | web-1 | changed | disk SAMPLE SM600 600 GB | Z-web-1 | "
              "OperationalStatus | OK | "
              "Degraded\n"
              "2026-03-03T03:00:00Z | web-2 | changed | disk SAMPLE SM600 600 GB | Z-web-2 | "
              "OperationalStatus | OK | "
              "Degraded\n");
    EXPECT_EQ(ShowRows(ListChanges(store, monday + day + 1)), "");
}

// ---- where

TEST(FindPart, FollowsAPartFromMachineToMachine) {
    TMadeFleet fleet;
    fleet.Add("web-1", "RackStar", monday, {MakeModule("A1", "M1")});
    fleet.Add("web-2", "RackStar", monday, {MakeModule("B2", "M2")});
    fleet.Add("web-1", "RackStar", monday + day, {});
    fleet.Add("web-2", "RackStar", monday + day, {MakeModule("B2", "M1")});
    fleet.Add("web-2", "RackStar", monday + 2 * day, {MakeModule("B2", "M1", "1200")});
    IFleetStore& store = fleet.GetStore();
    const TAnswer answer = FindPart(store, "M1");
    EXPECT_EQ(ShowRows(answer),
              "web-1 | memory module 16 GiB | A1 | 2026-03-02T03:00:00Z | 2026-03-03T03:00:00Z\n"
              "web-2 | memory module 16 GiB | B2 | 2026-03-03T03:00:00Z | now\n");
    EXPECT_THAT(answer.notes, ElementsAre());
    EXPECT_EQ(ShowRows(FindPart(store, "M3")), "");
}

TEST(FindPart, ReportsAPartInTwoMachinesAtOnce) {
    TMadeFleet fleet;
    fleet.Add("web-1", "RackStar", monday, {MakeModule("A1", "M1")});
    fleet.Add("web-2", "RackStar", monday + day, {MakeModule("B2", "M1")});
    IFleetStore& store = fleet.GetStore();
    EXPECT_THAT(FindPart(store, "M1").notes,
                ElementsAre("in two machines at once from 2026-03-03T03:00:00Z: web-1 and web-2"));
}

// ---- outliers

class ListOutliersTest : public ::testing::Test {
  protected:
    // Adds machines of a model with two modules and a disk each.
    void AddMachines(int count, const std::string& model = "RackStar") {
        for (int i = 0; i < count; ++i) {
            const std::string name = model + "-" + std::to_string(i);
            fleet_.Add(name, model, monday,
                       {MakeModule("A1", "M1" + name), MakeModule("A2", "M2" + name), MakeDisk("Z" + name)});
        }
    }
    std::string List(const std::optional<std::string>& model = std::nullopt) {
        return ShowRows(ListOutliers(fleet_.GetStore(), model));
    }

    TMadeFleet fleet_;
};

TEST_F(ListOutliersTest, FindsTheValueOfOneMachine) {
    AddMachines(9);
    fleet_.Add("odd", "RackStar", monday,
               {MakeModule("A1", "M1"), MakeModule("A2", "M2", "1200"), MakeDisk("Z1", "3")});
    EXPECT_EQ(List(),
              "RackStar | odd | disk SAMPLE SM600 600 GB | OperationalStatus | Degraded | OK | 1 | 10\n"
              "RackStar | odd | memory module 16 GiB in A2 | Speed | 1200 MT/s | 2400 MT/s | 1 "
              "| 10\n");
}

TEST_F(ListOutliersTest, FindsAMissingPart) {
    AddMachines(9);
    fleet_.Add("odd", "RackStar", monday, {MakeModule("A1", "M1"), MakeDisk("Z1")});
    EXPECT_EQ(List(), "RackStar | odd | memory modules | number | 1 | 2 | 1 | 10\n");
}

TEST_F(ListOutliersTest, ComparesNoSmallModels) {
    AddMachines(6);
    fleet_.Add("odd", "RackStar", monday, {MakeDisk("Z1", "3")});
    const TAnswer answer = ListOutliers(fleet_.GetStore(), std::nullopt);
    EXPECT_EQ(ShowRows(answer), "");
    EXPECT_THAT(answer.notes, ElementsAre("models with fewer than 8 machines, which are not compared: 1"));
}

TEST_F(ListOutliersTest, LeavesOutPropertiesThatVary) {
    for (int i = 0; i < 20; ++i) {
        fleet_.Add("m" + std::to_string(i), "RackStar", monday,
                   {MakeResource("DiskDrive", "d" + std::to_string(i), {{"Caption", std::to_string(i)}})});
    }
    EXPECT_EQ(List(), "");
}

TEST_F(ListOutliersTest, LooksAtOneModelOnly) {
    AddMachines(8, "RackStar");
    AddMachines(8, "BladeStar");
    fleet_.Add("odd rack", "RackStar", monday,
               {MakeModule("A1", "M1"), MakeModule("A2", "M2"), MakeDisk("Z1", "3")});
    fleet_.Add("odd blade", "BladeStar", monday,
               {MakeModule("A1", "M3"), MakeModule("A2", "M4"), MakeDisk("Z2", "3")});
    EXPECT_EQ(
        List("BladeStar"),
        "BladeStar | odd blade | disk SAMPLE SM600 600 GB | OperationalStatus | Degraded | OK | 1 | 9\n");
}

TEST_F(ListOutliersTest, ComparesMachinesOfSeveralModelsOfOneVendor) {
    AddMachines(5, "RackStar");
    AddMachines(5, "BladeStar");
    fleet_.Add("odd", "TowerStar", monday,
               {MakeModule("A1", "M1"), MakeModule("A2", "M2"), MakeDisk("Z1", "3")});
    IFleetStore& store = fleet_.GetStore();

    EXPECT_EQ(ShowRows(ListOutliers(store, std::nullopt)), "");
    EXPECT_EQ(ShowRows(ListOutliers(store, std::nullopt, "vendor")),
              "TowerStar | odd | disk SAMPLE SM600 600 GB | OperationalStatus | Degraded | OK | 1 | 11 | "
              "Example Servers\n");
}

TEST_F(ListOutliersTest, LeavesOutPropertiesThatVaryAmongTheModelsOfAGroup) {
    for (int i = 0; i < 40; ++i) {
        const std::string model = "Star " + std::to_string(i / 2);
        fleet_.Add("m" + std::to_string(i), model, monday,
                   {MakeResource("DiskDrive", "d" + std::to_string(i), {{"Caption", model}})});
    }
    EXPECT_EQ(ShowRows(ListOutliers(fleet_.GetStore(), std::nullopt, "vendor")), "");
}

TEST_F(ListOutliersTest, FindsValuesOfSeveralVersionsAndModelsOfAGroup) {
    for (int i = 0; i < 40; ++i) {
        const bool isOdd = i % 20 == 7;
        fleet_.Add("m" + std::to_string(i), i < 38 ? "RackStar" : "BladeStar", monday,
                   {MakeResource("DiskDrive", "d" + std::to_string(i),
                                 {{"Name", "SM600"}, {"Revision", isOdd ? "A" : "B"}}),
                    MakeResource("Card", "c" + std::to_string(i), {{"Model", i < 38 ? "X1" : "X2"}})});
    }
    EXPECT_EQ(ShowRows(ListOutliers(fleet_.GetStore(), std::nullopt, "vendor")),
              "RackStar | m27 | disk SM600 | Revision | A | B | 2 | 40 | Example Servers\n"
              "BladeStar | m38 | board | Model | X2 | X1 | 2 | 40 | Example Servers\n"
              "BladeStar | m39 | board | Model | X2 | X1 | 2 | 40 | Example Servers\n"
              "RackStar | m7 | disk SM600 | Revision | A | B | 2 | 40 | Example Servers\n");
}

TEST_F(ListOutliersTest, ComparesMachinesWithOneValueOfAPropertyOfAPart) {
    const auto add = [&](const std::string& name, const std::string& firmware, const std::string& speed) {
        fleet_.Add(name, "RackStar", monday,
                   {MakeModule("A1", "M1" + name, speed), MakeModule("A2", "M2" + name, speed),
                    MakeResource("BIOSElement", "firmware", {{"Version", firmware}})});
    };
    for (int i = 0; i < 9; ++i) {
        add("old-" + std::to_string(i), "1.7a", "2400");
        add("new-" + std::to_string(i), "1.9b", "3200");
    }
    add("odd", "1.9b", "2400");
    IFleetStore& store = fleet_.GetStore();

    EXPECT_EQ(ShowRows(ListOutliers(store, std::nullopt)), "");
    const TAnswer answer = ListOutliers(store, "RackStar", "BIOSElement.Version");
    EXPECT_EQ(
        ShowRows(answer),
        "RackStar | odd | memory module 16 GiB in A1 | Speed | 2400 MT/s | 3200 MT/s | 1 | 10 | 1.9b\n"
        "RackStar | odd | memory module 16 GiB in A2 | Speed | 2400 MT/s | 3200 MT/s | 1 | 10 | 1.9b\n");
    EXPECT_THAT(answer.notes, ElementsAre());
}

TEST_F(ListOutliersTest, RejectsAPropertyThatNoMachineHas) {
    AddMachines(1);
    IFleetStore& store = fleet_.GetStore();
    EXPECT_EQ(FailureOf([&] { (void)ListOutliers(store, std::nullopt, "DiskDrive.Colour"); }),
              "no part of a machine has the property 'DiskDrive.Colour'");
    EXPECT_EQ(FailureOf([&] { (void)ListOutliers(store, std::nullopt, "colour"); }),
              "'colour' is not TYPE.PROPERTY, nor one of name, vendor, model, serial, uuid, key");
}

TEST_F(ListOutliersTest, RejectsAModelWithoutMachines) {
    AddMachines(1);
    IFleetStore& store = fleet_.GetStore();
    EXPECT_EQ(FailureOf([&] { (void)ListOutliers(store, "TowerStar"); }),
              "no machine is of the model 'TowerStar'");
}

// ---- summary, inventory, SQL

TEST(SummarizeFleet, CountsModelsAndParts) {
    TMadeFleet fleet;
    fleet.Add("web-1", "RackStar", monday, {MakeModule("A1", "M1"), MakeModule("A2", "M2"), MakeDisk("Z1")});
    fleet.Add("web-2", "RackStar", monday, {MakeModule("A1", "M3"), MakeDisk("Z2"), MakeDisk("Z3")});
    fleet.Add("db-1", "BladeStar", monday, {MakeModule("A1", "M4")});
    EXPECT_EQ(ShowRows(SummarizeFleet(fleet.GetStore())),
              "models | Example Servers RackStar | 2 | 2\n"
              "models | Example Servers BladeStar | 1 | 1\n"
              "memory modules | 16 GiB 2400 MT/s | - | 4\n"
              "disks | SAMPLE SM600 600 GB | - | 3\n"
              "disks by age | less than 7 days | - | 3\n");
}

std::string ShowAges(IFleetStore& store) {
    std::string text;
    for (const TAgeCount& age : CountAges(store, store.ReadMachines(), "DiskDrive")) {
        text += std::string(age.span) + ": " + std::to_string(age.parts) + "\n";
    }
    return text;
}

TEST(CountAges, CountsFromTheFirstInventoryThatHasADisk) {
    TMadeFleet fleet;
    fleet.Add("web-1", "RackStar", monday, {MakeDisk("Z1"), MakeDisk("Z2")});
    fleet.Add("web-1", "RackStar", monday + 80 * day, {MakeDisk("Z1"), MakeDisk("Z3")});
    fleet.Add("web-1", "RackStar", monday + 100 * day, {MakeDisk("Z1"), MakeDisk("Z3")});
    fleet.Add("web-2", "RackStar", monday, {MakeDisk("Z4")});
    EXPECT_EQ(ShowAges(fleet.GetStore()),
              "less than 7 days: 1\n"
              "7 to 30 days: 1\n"
              "90 days to 1 year: 1\n");
}

TEST(CountAges, GoesOnWithAnUpdateAReturnAndAMove) {
    TMadeFleet fleet;
    fleet.Add("updated", "RackStar", monday, {MakeDisk("Z1", "2")});
    fleet.Add("updated", "RackStar", monday + 40 * day, {MakeDisk("Z1", "5")});
    fleet.Add("returned", "RackStar", monday, {MakeDisk("Z2")});
    fleet.Add("returned", "RackStar", monday + 10 * day, {});
    fleet.Add("returned", "RackStar", monday + 40 * day, {MakeDisk("Z2")});
    fleet.Add("from", "RackStar", monday, {MakeNumberedDisk("Z3")});
    fleet.Add("from", "RackStar", monday + 39 * day, {});
    fleet.Add("to", "RackStar", monday + day, {});
    fleet.Add("to", "RackStar", monday + 40 * day, {MakeNumberedDisk("Z3")});
    fleet.Add("from", "RackStar", monday, {MakeDisk("naa.5000c50000000001")}, EScope::systemInformation);
    fleet.Add("from", "RackStar", monday + 39 * day, {}, EScope::systemInformation);
    fleet.Add("to", "RackStar", monday + day, {}, EScope::systemInformation);
    fleet.Add("to", "RackStar", monday + 40 * day, {MakeDisk("naa.5000c50000000001")},
              EScope::systemInformation);
    EXPECT_EQ(ShowAges(fleet.GetStore()), "30 to 90 days: 4\n");
}

TEST(CountAges, DistinguishesDisksInOnePlace) {
    const auto at = [](const std::string& serial) {
        TResource disk = MakeNumberedDisk(serial);
        disk.id = ToText(MakeDigest("port 1"));
        return disk;
    };
    TMadeFleet fleet;
    fleet.Add("web-1", "RackStar", monday, {at("Z1")});
    fleet.Add("web-1", "RackStar", monday + 400 * day, {at("Z2")});
    EXPECT_EQ(ShowAges(fleet.GetStore()), "less than 7 days: 1\n");
}

TEST(CountAges, ExpectsDisksKnownByTheirPositionToStay) {
    TMadeFleet fleet;
    for (const char* identifier : {"0000:00:1f.2/1:0", "SAME01@0000:00:1f.2/host-1"}) {
        const std::string machine = identifier;
        fleet.Add(machine + " from", "RackStar", monday, {MakeDisk(identifier)});
        fleet.Add(machine + " from", "RackStar", monday + 39 * day, {});
        fleet.Add(machine + " to", "RackStar", monday + day, {});
        fleet.Add(machine + " to", "RackStar", monday + 40 * day, {MakeDisk(identifier)});
    }
    EXPECT_EQ(ShowAges(fleet.GetStore()), "less than 7 days: 2\n");
}

TEST(CountAges, LooksAtTheScopeOfThePresent) {
    TMadeFleet fleet;
    fleet.Add("web-1", "RackStar", monday, {MakeDisk("Z1")});
    fleet.Add("web-1", "RackStar", monday + 1095 * day, {MakeDisk("Z1")}, EScope::snapshot);
    EXPECT_EQ(ShowAges(fleet.GetStore()), "3 to 5 years: 1\n");
}

struct TSeen final : NINVENTORY::IDocumentEvents {
    void BeginDocument(const NINVENTORY::TDocumentHead& head) override {
        text += "document " + head.timestamp + "\n";
    }
    void BeginList(std::string_view list, int) override { text += "list " + std::string(list) + "\n"; }
    void AddResource(TResource&& resource) override {
        text += resource.type;
        for (const NINVENTORY::TProperty& property : resource.properties) {
            text += " " + property.name + "=" + property.values.front();
        }
        text += "\n";
    }

    std::string text;
};

TEST(PassMachine, GivesTheInventoryOfATimeWithItsVolatileValues) {
    const auto system = [](const char* freeMemory) {
        return MakeResource("OperatingSystem", "os",
                            {{"Name", "Linux"}, {"FreePhysicalMemory", freeMemory}, {"OSType", "36"}});
    };
    TMadeFleet fleet;
    fleet.Add("web", "RackStar", monday, {system("1"), MakeDisk("Z1")});
    fleet.Add("web", "RackStar", monday + day, {system("2"), MakeDisk("Z2")});
    IFleetStore& store = fleet.GetStore();
    const TMachine machine = FindMachine(store, "web");
    TSeen first;
    PassMachine(store, machine, monday + day - 1, first);
    EXPECT_EQ(first.text,
              "document 2026-03-02T03:00:00Z\nlist LogicalDevice\n"
              "OperatingSystem Name=Linux FreePhysicalMemory=1 OSType=36\n"
              "DiskDrive Name=SAMPLE SM600 DeviceID=Z1 MaxMediaSize=600127266 OperationalStatus=2\n");
    TSeen present;
    PassMachine(store, machine, std::nullopt, present);
    EXPECT_EQ(present.text,
              "document 2026-03-03T03:00:00Z\nlist LogicalDevice\n"
              "OperatingSystem Name=Linux FreePhysicalMemory=2 OSType=36\n"
              "DiskDrive Name=SAMPLE SM600 DeviceID=Z2 MaxMediaSize=600127266 OperationalStatus=2\n");
    TSeen none;
    EXPECT_EQ(FailureOf([&] { PassMachine(store, machine, monday - 1, none); }),
              "web has no inventory at 2026-03-02T02:59:59Z; its first one is of 2026-03-02T03:00:00Z");
}

TEST(DescribeMachine, NamesTheRuleThatGaveTheKey) {
    TMadeFleet fleet;
    fleet.Add("web", "RackStar", monday, {});
    fleet.Add("web", "RackStar", monday + day, {});
    IFleetStore& store = fleet.GetStore();
    EXPECT_EQ(
        ShowRows(DescribeMachine(store, FindMachine(store, "web"))),
        "web | Example Servers | RackStar | S-web | - | uuid:web | system UUID of the Server, with its "
        "serial number or else its first hardware address | - | 2026-03-02T03:00:00Z | 2026-03-03T03:00:00Z "
        "| 2\n");
}

TEST(AskSql, ShowsBytesAsDigits) {
    TMadeFleet fleet;
    fleet.Add("web", "RackStar", monday, {});
    EXPECT_EQ(
        ShowRows(AskSql(fleet.GetStore(), "SELECT 1 AS a, 'x' AS b, x'00FF' AS c, NULL AS d, 0.5 AS e")),
        "1 | x | 00ff | - | 0.500000\n");
}

}  // namespace
}  // namespace NFLEET
