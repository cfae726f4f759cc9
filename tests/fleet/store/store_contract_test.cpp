// The contract of an engine, with the rows of two machines.
#include "tests/fleet/store/store_contract.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace NFLEET {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

using NINVENTORY::EShape;

constexpr TSeconds monday = 1709506800;
constexpr TSeconds tuesday = monday + 86400;
constexpr TSeconds now = open - 1;

const TMachineId web = MakeDigest("uuid:web");
const TMachineId db = MakeDigest("uuid:db");
const TMachineScope webHardware{web, EScope::hardware};
const TMachineScope webSnapshot{web, EScope::snapshot};
const TMachineScope dbHardware{db, EScope::hardware};

TMachine MakeMachine(const TMachineId& id, const std::string& name, bool usesSnapshot = false) {
    return {id,
            "uuid:" + name,
            EMachineRule::uuid,
            {name, "Example Servers", "7915-X3G", "S-" + name, "U-" + name},
            monday,
            tuesday,
            usesSnapshot};
}

THead MakeHead(const TMachineScope& place, TSeconds time) {
    return {place,
            time,
            MakeDigest("file"),
            MakeDigest("content"),
            {"db", "Example Servers", "7915-X3G", "", ""}};
}

TInventory MakeInventory(const TMachineScope& place, TSeconds time, std::vector<TVolatileValue> values = {}) {
    return {place, time, MakeDigest("file " + std::to_string(time)), "/srv/it's/a file.xml.gz",
            std::move(values)};
}

TVersion MakeVersion(const std::string& model) {
    return {MakeDigest(model),
            "DiskDrive",
            "LogicalDevice",
            std::nullopt,
            {{{"Name", "string", EShape::scalar, {model}}, false},
             {{"DeviceID", "string", EShape::scalar, {}}, true},
             {{"MaxMediaSize", "unsignedLong", EShape::scalar, {"600127266"}}, false},
             {{"DefaultBlockSize", "unsignedLong", EShape::scalar, {"0512"}}, false},
             {{"OperationalStatus", "unsignedShort", EShape::array, {"2", "18446744073709551615"}}, false},
             {{"Empty", "string", EShape::array, {}}, false},
             {{"Blank", "string", EShape::scalar, {""}}, false},
             {{"Missing", "dateTime", EShape::null, {}}, false}}};
}

TPresence MakePresence(const TMachineScope& place, const std::string& serial, const std::string& model,
                       TSeconds since = always, TSeconds until = open) {
    return {place, "DiskDrive", MakeDigest(serial), since, until, MakeDigest(model), {{serial}}};
}

TBatch MakeTwoMachines() {
    TBatch batch;
    batch.versions = {MakeVersion("SM600"), MakeVersion("SM900")};
    batch.presences = {
        MakePresence(webHardware, "D1", "SM600"), MakePresence(webHardware, "D2", "SM600", tuesday),
        MakePresence(webHardware, "D2", "SM900", always, tuesday),
        MakePresence(dbHardware, "D3", "SM900", always, tuesday), MakePresence(dbHardware, "D4", "SM600")};
    batch.machines = {MakeMachine(web, "web"), MakeMachine(db, "db")};
    batch.heads = {MakeHead(webHardware, tuesday), MakeHead(dbHardware, tuesday)};
    batch.inventories = {MakeInventory(webHardware, monday), MakeInventory(webHardware, tuesday),
                         MakeInventory(dbHardware, monday), MakeInventory(dbHardware, tuesday)};
    return batch;
}

std::vector<std::string> ListSerials(const std::vector<TPresence>& rows) {
    std::vector<std::string> serials;
    serials.reserve(rows.size());
    for (const TPresence& row : rows) {
        serials.push_back(row.identity.empty() ? "" : row.identity[0][0]);
    }
    return serials;
}

template <typename TRow>
std::vector<TRow> Sorted(std::vector<TRow> rows) {
    std::ranges::sort(rows, {}, [](const TRow& row) { return row.id; });
    return rows;
}

TEST_P(FleetStore, MigratesTwice) {
    const int version = store_->GetSchemaVersion();
    store_->Migrate();

    EXPECT_GT(version, 0);
    EXPECT_EQ(store_->GetSchemaVersion(), version);
}

TEST_P(FleetStore, AnswersEveryQuestionBeforeTheFirstInventory) {
    EXPECT_THAT(store_->ReadMachines(), IsEmpty());
    EXPECT_THAT(store_->FindAliases(std::vector{web}), IsEmpty());
    EXPECT_THAT(store_->ReadAliasesOf(web), IsEmpty());
    EXPECT_THAT(store_->ReadMergedAliases(std::nullopt), IsEmpty());
    EXPECT_THAT(store_->FindNamedMachines("web"), IsEmpty());
    EXPECT_THAT(store_->FindSources(std::vector<std::uint64_t>{1}), IsEmpty());
    EXPECT_THAT(store_->ReadInventories({}), IsEmpty());
    EXPECT_THAT(store_->ReadPresences(webHardware, now), IsEmpty());
    EXPECT_THAT(store_->ReadChanges({}), IsEmpty());
    EXPECT_THAT(store_->FindIdentity("D1"), IsEmpty());
    EXPECT_THAT(store_->CountVersions({}), IsEmpty());
    EXPECT_THAT(store_->FindPresences(std::vector{MakeDigest("SM600")}, std::nullopt), IsEmpty());
    EXPECT_THAT(store_->FindMachinesWith(std::vector{MakeDigest("SM600")}), IsEmpty());
    EXPECT_THAT(store_->ReadVersions(std::vector{MakeDigest("SM600")}), IsEmpty());
    EXPECT_THAT(store_->FindKnownVersions(std::vector{MakeDigest("SM600")}), IsEmpty());
    EXPECT_THAT(store_->ReadHeads(std::vector{web}), IsEmpty());
    ASSERT_EQ(store_->ReadStates(std::vector{webHardware}).size(), 1U);
    EXPECT_EQ(store_->ReadStates(std::vector{webHardware})[0].place, webHardware);
}

TEST_P(FleetStore, ReturnsMachinesAndHeads) {
    const TBatch batch = MakeTwoMachines();
    Write(batch);

    EXPECT_EQ(store_->ReadMachines(), Sorted(batch.machines));
    EXPECT_THAT(store_->FindMachines(std::vector{web, MakeDigest("none")}), ElementsAre(batch.machines[0]));
    EXPECT_THAT(store_->ReadHeads(std::vector{web}), ElementsAre(batch.heads[0]));
}

TEST_P(FleetStore, FindsMachinesByKeyNameSerialNumberUuidAndFirstDigits) {
    TBatch batch = MakeTwoMachines();
    batch.machines[0].facts.uuid = "4C4C4544-0042-3510-8052-B4C04F4A3132";
    Write(batch);

    for (const std::string& text :
         {std::string("uuid:web"), std::string("web"), std::string("S-web"),
          std::string("4C4C4544-0042-3510-8052-B4C04F4A3132"),
          std::string("4c4c4544-0042-3510-8052-b4c04f4a3132"), ToText(web).substr(0, 6), ToText(web)}) {
        EXPECT_THAT(store_->FindNamedMachines(text), ElementsAre(batch.machines[0])) << text;
    }
    for (const std::string& text :
         {std::string("WEB"), std::string("s-web"), std::string("uuid:"), std::string("we"),
          std::string("Example Servers"), ToText(web).substr(0, 5), ToText(web) + "0"}) {
        EXPECT_THAT(store_->FindNamedMachines(text), IsEmpty()) << text;
    }
}

TEST_P(FleetStore, FindsEveryMachineThatATextNames) {
    TBatch batch = MakeTwoMachines();
    batch.machines[0].facts = {"db", "", "", "same", ""};
    batch.machines[1].facts = {"same", "", "", "", ""};
    Write(batch);

    EXPECT_EQ(store_->FindNamedMachines("same"), Sorted(batch.machines));
    EXPECT_THAT(store_->FindNamedMachines(""), IsEmpty());
}

TEST_P(FleetStore, FindsMachinesByTheirNewestNamesOnly) {
    TBatch batch = MakeTwoMachines();
    Write(batch);
    batch.machines[0].facts.name = "web-2";
    TBatch change;
    change.machines = {batch.machines[0]};
    Write(change);

    EXPECT_THAT(store_->FindNamedMachines("web"), IsEmpty());
    EXPECT_THAT(store_->FindNamedMachines("web-2"), ElementsAre(batch.machines[0]));
    EXPECT_THAT(store_->FindNamedMachines("S-web"), ElementsAre(batch.machines[0]));
}

TEST_P(FleetStore, FindsMachinesByHostileNames) {
    const std::vector<std::string> names = {"%",
                                            "' OR 1=1 --",
                                            "\\' OR 1=1 --",
                                            "quote \" backslash \\ tab \t line \n \\N \x01",
                                            "\xFF\xC3(",
                                            "\xC3\x84",
                                            std::string("before\0after", 12),
                                            std::string(300'000, '\'')};
    for (const std::string& name : names) {
        EXPECT_THAT(store_->FindNamedMachines(name), IsEmpty());
        TBatch batch;
        batch.machines = {MakeMachine(web, "web"), MakeMachine(db, "db")};
        batch.machines[0].facts.name = name;
        Write(batch);
        EXPECT_THAT(store_->FindNamedMachines(name), ElementsAre(batch.machines[0])) << name.substr(0, 30);
    }
    EXPECT_THAT(store_->FindNamedMachines("\xC3\xA4"), IsEmpty());
    EXPECT_THAT(store_->FindNamedMachines("_"), IsEmpty());
}

TEST_P(FleetStore, ReplacesMachinesAndHeads) {
    Write(MakeTwoMachines());
    TBatch change;
    change.machines = {MakeMachine(web, "web", true)};
    change.machines[0].facts.name = "web-2";
    change.machines[0].key = "uuid:web serial:W2";
    change.heads = {MakeHead(webHardware, tuesday + 1)};
    Write(change);

    EXPECT_THAT(store_->FindMachines(std::vector{web}), ElementsAre(change.machines[0]));
    EXPECT_THAT(store_->ReadHeads(std::vector{web}), ElementsAre(change.heads[0]));
}

TEST_P(FleetStore, ReturnsVersionsWithEveryFormOfValue) {
    Write(MakeTwoMachines());

    EXPECT_THAT(store_->ReadVersions(std::vector{MakeDigest("SM900"), MakeDigest("none")}),
                ElementsAre(MakeVersion("SM900")));
    EXPECT_THAT(store_->FindKnownVersions(std::vector{MakeDigest("SM900"), MakeDigest("none")}),
                ElementsAre(MakeDigest("SM900")));
}

TEST_P(FleetStore, KeepsIdentifiersOfVersions) {
    TBatch batch;
    TVersion version = MakeVersion("SM600");
    version.id = "";
    TVersion other = MakeVersion("SM900");
    other.id = "'; DROP TABLE machine; --";
    batch.versions = {version, other};
    Write(batch);

    EXPECT_THAT(store_->ReadVersions(std::vector{version.digest, other.digest}),
                UnorderedElementsAre(version, other));
}

TEST_P(FleetStore, AcceptsVersionsThatItHas) {
    Write(MakeTwoMachines());
    Write(MakeTwoMachines());

    EXPECT_THAT(store_->ReadVersions(std::vector{MakeDigest("SM900")}), ElementsAre(MakeVersion("SM900")));
    EXPECT_EQ(store_->ReadPresences(webHardware, now).size(), 2U);
    EXPECT_EQ(store_->ReadInventories({}).size(), 4U);
}

TEST_P(FleetStore, ReturnsTheResourcesOfATime) {
    Write(MakeTwoMachines());

    EXPECT_THAT(ListSerials(store_->ReadPresences(dbHardware, monday)), UnorderedElementsAre("D3", "D4"));
    EXPECT_THAT(ListSerials(store_->ReadPresences(dbHardware, tuesday - 1)),
                UnorderedElementsAre("D3", "D4"));
    EXPECT_THAT(store_->ReadPresences(dbHardware, tuesday),
                ElementsAre(MakePresence(dbHardware, "D4", "SM600")));
    EXPECT_THAT(store_->ReadPresences(webSnapshot, tuesday), IsEmpty());
}

TEST_P(FleetStore, ReturnsTheWholeStateOfAPlace) {
    const TBatch batch = MakeTwoMachines();
    Write(batch);

    const auto states = store_->ReadStates(std::vector{dbHardware, webSnapshot, webHardware});

    ASSERT_EQ(states.size(), 3U);
    EXPECT_THAT(states[0].presences, UnorderedElementsAre(batch.presences[3], batch.presences[4]));
    EXPECT_THAT(states[0].inventories, ElementsAre(batch.inventories[2], batch.inventories[3]));
    EXPECT_THAT(states[1].presences, IsEmpty());
    EXPECT_EQ(states[2].presences.size(), 3U);
}

TEST_P(FleetStore, ReplacesAndRemovesPresences) {
    Write(MakeTwoMachines());
    TBatch change;
    change.presences = {MakePresence(dbHardware, "D3", "SM900")};
    change.removedPresences = {MakePresence(dbHardware, "D4", "SM600").GetKey()};
    Write(change);

    EXPECT_THAT(store_->ReadPresences(dbHardware, now), ElementsAre(MakePresence(dbHardware, "D3", "SM900")));
}

TEST_P(FleetStore, ReturnsInventoriesInASpan) {
    Write(MakeTwoMachines());

    EXPECT_EQ(store_->ReadInventories({}).size(), 4U);
    EXPECT_THAT(store_->ReadInventories({.machine = web}),
                ElementsAre(MakeInventory(webHardware, monday), MakeInventory(webHardware, tuesday)));
    EXPECT_THAT(store_->ReadInventories({.machine = web, .until = tuesday}),
                ElementsAre(MakeInventory(webHardware, monday)));
    EXPECT_THAT(store_->ReadInventories({.machine = web, .since = monday + 1}),
                ElementsAre(MakeInventory(webHardware, tuesday)));
    EXPECT_THAT(store_->ReadInventories({.machine = web, .newestOnly = true}),
                ElementsAre(MakeInventory(webHardware, tuesday)));
    EXPECT_THAT(store_->ReadInventories({.machine = web, .until = tuesday, .newestOnly = true}),
                ElementsAre(MakeInventory(webHardware, monday)));
    EXPECT_THAT(store_->ReadInventories({.scope = EScope::snapshot}), IsEmpty());
}

TEST_P(FleetStore, ReturnsVolatileValuesOnDemand) {
    TBatch batch;
    batch.machines = {MakeMachine(web, "web")};
    batch.inventories = {
        MakeInventory(webHardware, monday,
                      {{MakeDigest("D1"), 3, {"MountCount", "unsignedLong", EShape::scalar, {"17"}}},
                       {MakeDigest("D1"), 4, {"Temperatures", "unsignedByte", EShape::array, {"30", "41"}}},
                       {MakeDigest("D2"), 3, {"MountCount", "unsignedLong", EShape::null, {}}}})};
    Write(batch);

    EXPECT_THAT(store_->ReadInventories({.machine = web, .withVolatileValues = true}),
                ElementsAre(batch.inventories[0]));
    EXPECT_THAT(store_->ReadInventories({.machine = web}), ElementsAre(MakeInventory(webHardware, monday)));
}

TEST_P(FleetStore, FindsInventoriesByKey) {
    Write(MakeTwoMachines());

    EXPECT_THAT(
        store_->FindInventories(std::vector{TInventoryKey{webHardware, monday}, TInventoryKey{webHardware, 1},
                                            TInventoryKey{webSnapshot, monday}}),
        ElementsAre(MakeInventory(webHardware, monday)));
}

TEST_P(FleetStore, RemovesInventoriesAndHeads) {
    Write(MakeTwoMachines());
    TBatch change;
    change.removedInventories = {{webHardware, monday}, {webHardware, tuesday}};
    change.removedHeads = {webHardware};
    Write(change);

    EXPECT_THAT(store_->ReadInventories({.machine = web}), IsEmpty());
    EXPECT_THAT(store_->ReadHeads(std::vector{web}), IsEmpty());
}

TEST_P(FleetStore, ReturnsRowsThatBeginOrEndInASpan) {
    Write(MakeTwoMachines());

    EXPECT_THAT(ListSerials(store_->ReadChanges({.since = monday})), UnorderedElementsAre("D2", "D2", "D3"));
    EXPECT_THAT(ListSerials(store_->ReadChanges({.since = monday, .until = tuesday})),
                UnorderedElementsAre("D2", "D2", "D3"));
    EXPECT_THAT(store_->ReadChanges({.since = tuesday}), IsEmpty());
    EXPECT_THAT(store_->ReadChanges({.until = tuesday - 1}), IsEmpty());
    EXPECT_THAT(ListSerials(store_->ReadChanges({.machine = web})), ElementsAre("D2", "D2"));
    EXPECT_THAT(store_->ReadChanges({.machine = MakeDigest("none")}), IsEmpty());
}

TEST_P(FleetStore, ReturnsTheChangesOfTypes) {
    TBatch batch = MakeTwoMachines();
    batch.versions.push_back(MakeVersion("LTO"));
    batch.versions.back().type = "TapeDrive";
    batch.presences.push_back(MakePresence(dbHardware, "T1", "LTO", tuesday));
    batch.presences.back().type = "TapeDrive";
    const TPresence tape = batch.presences.back();
    Write(batch);

    EXPECT_THAT(store_->ReadChanges({.types = {"TapeDrive"}}), ElementsAre(tape));
    EXPECT_THAT(ListSerials(store_->ReadChanges({.types = {"DiskDrive"}})),
                UnorderedElementsAre("D2", "D2", "D3"));
    EXPECT_EQ(store_->ReadChanges({.types = {"DiskDrive", "TapeDrive"}}), store_->ReadChanges({}));
    EXPECT_THAT(ListSerials(store_->ReadChanges({.machine = web, .types = {"DiskDrive"}})),
                ElementsAre("D2", "D2"));
    EXPECT_THAT(store_->ReadChanges({.since = tuesday, .types = {"DiskDrive"}}), IsEmpty());
    EXPECT_THAT(store_->ReadChanges({.until = tuesday - 1, .types = {"DiskDrive"}}), IsEmpty());
    EXPECT_THAT(store_->ReadChanges({.types = {"it's"}}), IsEmpty());
}

TEST_P(FleetStore, FindsIdentifyingValuesOfAllTimes) {
    Write(MakeTwoMachines());

    EXPECT_THAT(store_->FindIdentity("D3"),
                ElementsAre(MakePresence(dbHardware, "D3", "SM900", always, tuesday)));
    EXPECT_EQ(store_->FindIdentity("D2").size(), 2U);
    EXPECT_THAT(store_->FindIdentity("D"), IsEmpty());
    EXPECT_THAT(store_->FindIdentity(""), IsEmpty());
    EXPECT_THAT(store_->FindIdentity("' OR 1=1 --"), IsEmpty());
}

TEST_P(FleetStore, FindsEachValueOfAnIdentity) {
    TBatch batch = MakeTwoMachines();
    batch.presences = {MakePresence(webHardware, "D1", "SM600")};
    batch.presences[0].identity = {{"a", "quote \" backslash \\ tab \t"}, {}, {"\xC3\xA4"}};
    Write(batch);

    EXPECT_THAT(store_->FindIdentity("quote \" backslash \\ tab \t"), ElementsAre(batch.presences[0]));
    EXPECT_THAT(store_->FindIdentity("\xC3\xA4"), ElementsAre(batch.presences[0]));
}

TEST_P(FleetStore, FindsIdentifyingValuesOfAnyLength) {
    const std::string start(100'000, '\x01');
    TBatch batch = MakeTwoMachines();
    batch.presences = {MakePresence(webHardware, "D1", "SM600")};
    batch.presences[0].identity = {{start + "a"}};
    Write(batch);

    EXPECT_THAT(store_->FindIdentity(start + "a"), ElementsAre(batch.presences[0]));
    EXPECT_THAT(store_->FindIdentity(start + "b"), IsEmpty());
    EXPECT_THAT(store_->FindIdentity(start), IsEmpty());
}

TEST_P(FleetStore, CountsVersionsOfThePresent) {
    TBatch batch = MakeTwoMachines();
    batch.machines[1].facts.model = "Box 1";
    Write(batch);
    const TVersionCount boxes{"Box 1", "DiskDrive", MakeDigest("SM600"), 1, 1};
    const TVersionCount servers{"7915-X3G", "DiskDrive", MakeDigest("SM600"), 1, 2};

    EXPECT_THAT(store_->CountVersions({}), ElementsAre(servers, boxes));
    EXPECT_THAT(store_->CountVersions({.types = {"DiskDrive", "TapeDrive"}}), ElementsAre(servers, boxes));
    EXPECT_THAT(store_->CountVersions({.types = {"TapeDrive"}}), IsEmpty());
    EXPECT_THAT(store_->CountVersions({.model = "Box 1"}), ElementsAre(boxes));
    EXPECT_THAT(store_->CountVersions({.model = "Box"}), IsEmpty());
}

TEST_P(FleetStore, CountsTheSnapshotOfMachinesThatUseIt) {
    TBatch batch = MakeTwoMachines();
    batch.machines = {MakeMachine(web, "web", true), MakeMachine(db, "db")};
    batch.presences.push_back(MakePresence(webSnapshot, "D9", "SM900"));
    Write(batch);

    EXPECT_THAT(store_->CountVersions({}),
                UnorderedElementsAre(TVersionCount{"7915-X3G", "DiskDrive", MakeDigest("SM600"), 1, 1},
                                     TVersionCount{"7915-X3G", "DiskDrive", MakeDigest("SM900"), 1, 1}));
}

TEST_P(FleetStore, CountsPartsOfMachines) {
    TBatch batch = MakeTwoMachines();
    batch.presences.push_back(MakePresence(webSnapshot, "D9", "SM900"));
    Write(batch);
    const TPartCount ofWeb{web, "DiskDrive", 2};
    const TPartCount ofDb{db, "DiskDrive", 1};

    EXPECT_THAT(store_->CountParts({.types = {"TapeDrive", "DiskDrive"}}), UnorderedElementsAre(ofWeb, ofDb));
    EXPECT_THAT(store_->CountParts({.model = "7915-X3G", .types = {"DiskDrive"}}),
                UnorderedElementsAre(ofWeb, ofDb));
    EXPECT_THAT(store_->CountParts({.model = "Box 1", .types = {"DiskDrive"}}), IsEmpty());
    EXPECT_THAT(store_->CountParts({.types = {"TapeDrive"}}), IsEmpty());
}

TEST_P(FleetStore, AddsUpThePartsOfBothDocuments) {
    TBatch batch = MakeTwoMachines();
    const TMachineScope webSystem{web, EScope::systemInformation};
    batch.presences.push_back(MakePresence(webSystem, "D5", "SM600"));
    Write(batch);
    const TPartCount ofWeb{web, "DiskDrive", 3};
    const TPartCount ofDb{db, "DiskDrive", 1};

    EXPECT_THAT(store_->CountParts({.types = {"DiskDrive"}}), UnorderedElementsAre(ofWeb, ofDb));
}

TEST_P(FleetStore, FindsPresencesOfVersions) {
    Write(MakeTwoMachines());
    const std::vector versions = {MakeDigest("SM600")};

    EXPECT_THAT(ListSerials(store_->FindPresences(versions, std::nullopt)),
                UnorderedElementsAre("D1", "D2", "D4"));
    EXPECT_THAT(store_->FindPresences(versions, "Box 1"), IsEmpty());
    EXPECT_THAT(store_->FindPresences(std::vector{MakeDigest("SM900")}, std::nullopt), IsEmpty());
}

TEST_P(FleetStore, FindsMachinesWithVersions) {
    TBatch batch = MakeTwoMachines();
    batch.presences.push_back(MakePresence(webSnapshot, "D9", "SM900"));
    Write(batch);
    std::vector both{web, db};
    std::ranges::sort(both);

    EXPECT_EQ(store_->FindMachinesWith(std::vector{MakeDigest("SM600")}), both);
    EXPECT_EQ(store_->FindMachinesWith(std::vector{MakeDigest("SM600"), MakeDigest("none")}), both);
    EXPECT_THAT(store_->FindMachinesWith(std::vector{MakeDigest("SM900")}), IsEmpty());
    EXPECT_THAT(store_->FindMachinesWith(std::vector{MakeDigest("none")}), IsEmpty());
    EXPECT_THAT(store_->FindMachinesWith({}), IsEmpty());

    TBatch change;
    change.machines = {MakeMachine(web, "web", /*usesSnapshot=*/true)};
    Write(change);
    EXPECT_THAT(store_->FindMachinesWith(std::vector{MakeDigest("SM600")}), ElementsAre(db));
    EXPECT_THAT(store_->FindMachinesWith(std::vector{MakeDigest("SM900")}), ElementsAre(web));
}

TEST_P(FleetStore, ReturnsAliases) {
    TBatch batch = MakeTwoMachines();
    batch.aliases = {{MakeDigest("old"), "uuid:old", web}};
    Write(batch);
    TBatch again;
    again.aliases = {{MakeDigest("old"), "uuid:old", db}};
    Write(again);

    const TAlias expected{MakeDigest("old"), "uuid:old", db};
    EXPECT_THAT(store_->FindAliases(std::vector{MakeDigest("other"), MakeDigest("old")}),
                ElementsAre(expected));
    EXPECT_THAT(store_->ReadAliasesOf(db), ElementsAre(expected));
    EXPECT_THAT(store_->ReadAliasesOf(web), IsEmpty());
}

TEST_P(FleetStore, ReturnsTheAliasesOfMergedMachines) {
    TBatch batch = MakeTwoMachines();
    const TAlias merged{MakeDigest("old"), "uuid:old", web};
    batch.aliases = {merged, {MakeDigest("a name"), "", web}};
    Write(batch);

    EXPECT_THAT(store_->ReadMergedAliases(std::nullopt), ElementsAre(merged));
    EXPECT_THAT(store_->ReadMergedAliases(web), ElementsAre(merged));
    EXPECT_THAT(store_->ReadMergedAliases(db), IsEmpty());
}

TEST_P(FleetStore, ReturnsSources) {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    TBatch batch;
    batch.sources = {{largest, largest, 70000}, {1, 2, 3}, {4, 5, 0}};
    Write(batch);
    Write(batch);

    EXPECT_THAT(store_->FindSources(std::vector<std::uint64_t>{2, largest, 1}),
                ElementsAre(TSource{1, 2, 3}, TSource{largest, largest, 70000}));
    EXPECT_THAT(store_->FindSources({}), IsEmpty());
}

TEST_P(FleetStore, ReplacesTheSourceOfAPlace) {
    TBatch batch;
    batch.sources = {{1, 20, 3}, {2, 20, 1}};
    Write(batch);
    for (const std::uint64_t state : {std::uint64_t{10}, std::uint64_t{30}, std::uint64_t{20}}) {
        batch.sources = {{1, state, state}};
        Write(batch);

        EXPECT_THAT(store_->FindSources(std::vector<std::uint64_t>{1, 2}),
                    ElementsAre(TSource{1, state, state}, TSource{2, 20, 1}));
    }
}

TEST_P(FleetStore, RemovesAMachineWithItsRows) {
    Write(MakeTwoMachines());
    TBatch change;
    change.removedMachines = {web};
    Write(change);

    EXPECT_EQ(store_->ReadMachines().size(), 1U);
    EXPECT_THAT(store_->ReadPresences(webHardware, now), IsEmpty());
    EXPECT_THAT(store_->ReadInventories({.machine = web}), IsEmpty());
    EXPECT_THAT(store_->ReadHeads(std::vector{web}), IsEmpty());
    EXPECT_THAT(store_->FindIdentity("D1"), IsEmpty());
    EXPECT_EQ(store_->FindIdentity("D3").size(), 1U);
    EXPECT_THAT(store_->FindNamedMachines("web"), IsEmpty());
    EXPECT_EQ(store_->FindNamedMachines("db").size(), 1U);
}

TEST_P(FleetStore, KeepsHostileTexts) {
    TBatch batch = MakeTwoMachines();
    batch.machines[0].facts.name = "'; DROP TABLE machine; -- \n\t\\N \x01";
    batch.machines[0].facts.vendor = "\xF0\x9F\x98\x80";
    Write(batch);

    EXPECT_THAT(store_->FindMachines(std::vector{web}), ElementsAre(batch.machines[0]));
}

class TRecordedRows final : public ISqlRows {
  public:
    void BeginRows(const std::vector<std::string>& columns) override { columns_ = columns; }
    bool AddRow(const std::vector<TSqlValue>& values) override {
        rows_.push_back(values);
        return rows_.size() < limit_;
    }

    std::vector<std::string> columns_;
    std::vector<std::vector<TSqlValue>> rows_;
    std::size_t limit_ = 1000;
};

TEST_P(FleetStore, RunsAQuery) {
    Write(MakeTwoMachines());
    TRecordedRows rows;

    store_->RunSql("SELECT name FROM machine ORDER BY name", rows);

    EXPECT_THAT(rows.columns_, ElementsAre("name"));
    EXPECT_THAT(rows.rows_, ElementsAre(ElementsAre(TSqlValue("db")), ElementsAre(TSqlValue("web"))));
}

TEST_P(FleetStore, RefusesQueriesThatWriteOrAreMalformed) {
    Write(MakeTwoMachines());
    TRecordedRows rows;

    for (const std::string_view text : {"DROP TABLE machine", "INSERT INTO machine(name) VALUES('x')",
                                        "SELEC 1", "SELECT no_such_column FROM machine"}) {
        EXPECT_THROW(store_->RunSql(text, rows), TStoreError) << text;
    }
    EXPECT_EQ(store_->ReadMachines().size(), 2U);
}

TEST_P(FleetStore, AbandonsABatch) {
    store_->BeginBatch();
    store_->AbandonBatch();
    store_->AbandonBatch();
    Write(MakeTwoMachines());

    EXPECT_EQ(store_->ReadMachines().size(), 2U);
}

}  // namespace
}  // namespace NFLEET
