// The engine on a real server.
#include "fleet/clickhouse/clickhouse_store.h"

#include "clickhouse_server.h"
#include "fleet/clickhouse/client.h"
#include "fleet/clickhouse/loader_claim.h"
#include "loopback_port.h"
#include "tests/fleet/store/store_contract.h"
#include "waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <thread>

namespace NFLEET {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::unique_ptr<IFleetStore> MakeStore() {
    return OpenClickHouseStore(MakeDatabaseUrl());
}

INSTANTIATE_TEST_SUITE_P(ClickHouse, FleetStore, testing::Values(TStoreMaker{"clickhouse", MakeStore}),
                         testing::PrintToStringParamName());

TClickHouseClient Connect(const std::string& url) {
    return {ParseClickHouseAddress(url), OpenHttp({})};
}

std::unique_ptr<IFleetStore> OpenWithTimes(const std::string& url, TClaimTimes times) {
    return OpenClickHouseStore(ParseClickHouseAddress(url), {}, times);
}

std::string FailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const TStoreError& error) {
        return error.what();
    }
    return "none";
}

TDigest Id(std::uint8_t number) {
    TDigest digest;
    digest.bytes.fill(number);
    return digest;
}

TMachine Machine(std::uint8_t id) {
    TMachine machine;
    machine.id = Id(id);
    return machine;
}

TBatch OneMachine(std::uint8_t id) {
    TBatch batch;
    batch.machines = {Machine(id)};
    return batch;
}

void Write(IFleetStore& store, const TBatch& batch) {
    store.BeginBatch();
    store.Write(batch);
}

TEST(ClickHouseStore, NamesItself) {
    EXPECT_EQ(OpenClickHouseStore("clickhouses://db.example/fleet")->GetName(),
              "clickhouses://db.example:8443/fleet");
}

TEST(ClickHouseStore, FailsWithoutAServer) {
    const std::string port = std::to_string(NVORHOST::FindFreePort());
    const auto store = OpenClickHouseStore("clickhouse://127.0.0.1:" + port + "/fleet");
    EXPECT_THAT(FailureOf([&] { store->Migrate(); }),
                HasSubstr("ClickHouse at 127.0.0.1:" + port + "/fleet: Failed to connect"));
    EXPECT_NE(FailureOf([&] { (void)store->GetSchemaVersion(); }), "none");
    EXPECT_NE(FailureOf([&] { store->BeginBatch(); }), "none");
}

TEST(ClickHouseStore, HasNoTablesInADatabaseThatDoesNotExist) {
    const auto store = MakeStore();
    EXPECT_EQ(store->GetSchemaVersion(), 0);
    EXPECT_THAT(FailureOf([&] { (void)store->ReadMachines(); }), HasSubstr("doesn't exist"));
}

TEST(ClickHouseStore, LeavesTablesOfAnotherProgramAlone) {
    const std::string url = MakeDatabaseUrl();
    auto client = Connect(url);
    client.CreateDatabase();
    client.Execute("CREATE TABLE orders (a UInt8) ENGINE = MergeTree ORDER BY a");
    const auto store = OpenClickHouseStore(url);
    EXPECT_EQ(FailureOf([&] { store->Migrate(); }), url + " has the table orders of another program");
    EXPECT_EQ(store->GetSchemaVersion(), 0);
}

TEST(ClickHouseStore, RefusesTablesOfANewerProgram) {
    const std::string url = MakeDatabaseUrl();
    const auto store = OpenClickHouseStore(url);
    store->Migrate();
    Connect(url).Execute("INSERT INTO fleet_schema VALUES (99)");
    EXPECT_EQ(FailureOf([&] { store->Migrate(); }),
              url + " has schema version 99, which a newer version of this program wrote; this one knows 1");
}

TEST(ClickHouseStore, CompletesTablesThatWereMadeInPart) {
    const std::string url = MakeDatabaseUrl();
    const auto store = OpenClickHouseStore(url);
    store->Migrate();
    auto client = Connect(url);
    client.Execute("DROP TABLE fleet_schema");
    client.Execute("DROP TABLE resources");
    client.Execute("DROP TABLE presence_rows");
    store->Migrate();
    EXPECT_THAT(store->ReadChanges({}), IsEmpty());
    EXPECT_EQ(store->GetSchemaVersion(), 1);
}

// Returns the rows of a view, in order of their texts.
std::string ReadView(const std::string& url, const std::string& query) {
    return Connect(url).SelectText(query, "TabSeparated", {});
}

TEST(ClickHouseStore, ShowsRowsThatCountInItsViews) {
    const std::string url = MakeDatabaseUrl();
    const auto store = OpenClickHouseStore(url);
    store->Migrate();
    const TMachineScope place{Id(1), EScope::snapshot};
    TBatch batch = OneMachine(1);
    batch.machines[0].facts = {"host1", "", "model1", "", ""};
    batch.machines.push_back(Machine(2));
    batch.versions = {{Id(3),
                       "Disk",
                       "Disks",
                       std::nullopt,
                       {{{"Caps", "string", NINVENTORY::EShape::array, {"a", "b"}}, false},
                        {{"Size", "string", NINVENTORY::EShape::null, {}}, false}}}};
    batch.presences = {{place, "Disk", Id(4), always, 1'700'000'000, Id(3), {{"S1"}, {ToText(Id(4))}}},
                       {place, "Disk", Id(5), 9'999'999'999, open, Id(3), {}}};
    batch.inventories = {{place, 1'700'000'000, Id(6), "a.xml.gz", {}}};
    Write(*store, batch);
    Write(*store, batch);
    TBatch removal;
    removal.removedMachines = {Id(2)};
    Write(*store, removal);
    const std::string machine = ToText(Id(1));
    EXPECT_EQ(ReadView(url, "SELECT id, name FROM machine"), machine + "\thost1\n");
    EXPECT_EQ(ReadView(url, "SELECT * FROM inventories"),
              machine + "\thost1\tsnapshot\t2023-11-14 22:13:20\t" + ToText(Id(6)) + "\ta.xml.gz\n");
    EXPECT_EQ(ReadView(url, "SELECT * FROM resources ORDER BY resource"),
              machine + "\thost1\tmodel1\tDisk\t" + ToText(Id(4)) + "\tsnapshot\t\\N\t2023-11-14 22:13:20\t" +
                  ToText(Id(3)) + "\t[\"S1\",\"" + ToText(Id(4)) + "\"]\n" + machine +
                  "\thost1\tmodel1\tDisk\t" + ToText(Id(5)) + "\tsnapshot\t9999999999\t\\N\t" +
                  ToText(Id(3)) + "\t\n");
    EXPECT_EQ(ReadView(url, "SELECT * FROM properties ORDER BY name, element"),
              ToText(Id(3)) + "\tCaps\tstring\t1\ta\n" + ToText(Id(3)) + "\tCaps\tstring\t2\tb\n");
    EXPECT_EQ(
        ReadView(url, "SELECT time, change, resource FROM changes ORDER BY time"),
        "2023-11-14 22:13:20\tends\t" + ToText(Id(4)) + "\n9999999999\tbegins\t" + ToText(Id(5)) + "\n");
}

TEST(ClickHouseStore, CannotWriteWithoutABatch) {
    const std::string url = MakeDatabaseUrl();
    const auto store = OpenClickHouseStore(url);
    store->Migrate();
    EXPECT_EQ(FailureOf([&] { store->Write(OneMachine(1)); }),
              url + ": a batch is written that has not begun");
    EXPECT_THAT(store->ReadMachines(), IsEmpty());
}

TEST(ClickHouseStore, WaitsForTheBatchOfAnotherLoader) {
    const std::string url = MakeDatabaseUrl();
    const auto first = OpenClickHouseStore(url);
    first->Migrate();
    first->BeginBatch();
    const auto second = OpenWithTimes(url, {std::chrono::seconds(15), std::chrono::seconds(1)});
    EXPECT_EQ(FailureOf([&] { second->BeginBatch(); }),
              "another loader has been writing to " + url.substr(13) + " for 1 seconds");
    first->Write(OneMachine(1));
    Write(*second, OneMachine(2));
    EXPECT_EQ(first->ReadMachines().size(), 2U);
}

TEST(ClickHouseStore, TakesOverFromALoaderThatHasEnded) {
    const std::string url = MakeDatabaseUrl();
    const TClaimTimes times{std::chrono::seconds(1), std::chrono::seconds(30)};
    const auto first = OpenWithTimes(url, times);
    first->Migrate();
    first->BeginBatch();
    const auto second = OpenWithTimes(url, times);
    Write(*second, OneMachine(2));
    std::this_thread::sleep_for(times.expiry);
    EXPECT_EQ(
        FailureOf([&] { first->Write(OneMachine(1)); }),
        "another loader has claimed " + url.substr(13) + " in the middle of a batch that took too long");
    EXPECT_THAT(second->ReadMachines(), ElementsAre(Machine(2)));
}

TEST(ClickHouseStore, KeepsItsClaimDuringALongBatch) {
    const std::string url = MakeDatabaseUrl();
    const TClaimTimes times{std::chrono::seconds(1), std::chrono::seconds(30)};
    const auto store = OpenWithTimes(url, times);
    store->Migrate();
    store->BeginBatch();
    std::this_thread::sleep_for(std::chrono::seconds(2));
    store->Write(OneMachine(1));
    EXPECT_THAT(store->ReadMachines(), ElementsAre(Machine(1)));
}

// One inventory of a machine with one disk.
TBatch OneInventory(TSeconds time) {
    const TMachineScope place{Id(1), EScope::hardware};
    TBatch batch = OneMachine(1);
    batch.versions = {{Id(2), "Disk", "Disks", std::nullopt, {}}};
    batch.presences = {{place, "Disk", Id(3), always, open, Id(2), {}}};
    batch.heads = {{place, time, Id(4), Id(5), {}}};
    batch.inventories = {{place, time, Id(4), "path", {}}};
    return batch;
}

std::vector<TMachineScope> FindUnfinished(IFleetStore& store) {
    store.BeginBatch();
    auto places = store.FindUnfinished(std::vector{TMachineScope{Id(1), EScope::hardware}});
    store.AbandonBatch();
    return places;
}

TEST(ClickHouseStore, FindsPlacesThatABatchWasWrittenToInPart) {
    const auto store = MakeStore();
    store->Migrate();
    EXPECT_THAT(FindUnfinished(*store), IsEmpty());
    TBatch batch = OneInventory(100);
    batch.heads.clear();
    batch.inventories.clear();
    Write(*store, batch);
    EXPECT_EQ(FindUnfinished(*store).size(), 1U);  // neither head nor inventory
    batch.heads = OneInventory(100).heads;
    Write(*store, batch);
    EXPECT_EQ(FindUnfinished(*store).size(), 1U);  // no inventory
    Write(*store, OneInventory(100));
    EXPECT_THAT(FindUnfinished(*store), IsEmpty());
    batch.heads.clear();
    batch.presences[0].since = 200;
    Write(*store, batch);
    EXPECT_EQ(FindUnfinished(*store).size(), 1U);  // presences of a later inventory
}

TEST(ClickHouseStore, ReadsTheDigestOfAHeadFromItsInventory) {
    const auto store = MakeStore();
    store->Migrate();
    TBatch batch = OneInventory(100);
    Write(*store, batch);
    EXPECT_EQ(store->ReadHeads(std::vector{Id(1)}), batch.heads);
    batch.heads[0].digest = Id(9);
    Write(*store, batch);
    EXPECT_EQ(store->ReadHeads(std::vector{Id(1)}), batch.heads);
}

TEST(ClickHouseStore, FindsNoPlacesAfterInventoriesWithoutChanges) {
    const auto store = MakeStore();
    store->Migrate();
    Write(*store, OneInventory(100));
    TBatch batch = OneInventory(200);
    batch.presences.clear();
    Write(*store, batch);
    EXPECT_THAT(FindUnfinished(*store), IsEmpty());
}

TEST(ClickHouseStore, StoresCompositionsAndLayoutsOnceAndRemovesUnusedOnes) {
    const std::string url = MakeDatabaseUrl();
    const auto store = OpenClickHouseStore(url);
    store->Migrate();
    const auto count = [&url](const std::string& table) {
        return ReadView(url, "SELECT count() FROM " + table + " WHERE removed = 0");
    };
    TBatch batch = OneInventory(100);
    batch.inventories[0].volatileValues = {
        {Id(3), 0, {"MountCount", "unsignedLong", NINVENTORY::EShape::scalar, {"1"}}}};
    Write(*store, batch);
    batch.inventories[0].time = 200;
    batch.inventories[0].volatileValues[0].property.values = {"2"};
    Write(*store, batch);
    EXPECT_EQ(count("composition_rows"), "1\n");
    EXPECT_EQ(count("layout_rows"), "1\n");
    TBatch removal;
    removal.removedMachines = {Id(1)};
    Write(*store, removal);
    EXPECT_EQ(store->RemoveUnusedVersions(), 1U);
    EXPECT_EQ(ReadView(url, "SELECT count() FROM composition_rows FINAL WHERE removed = 0"), "0\n");
    EXPECT_EQ(ReadView(url, "SELECT count() FROM layout_rows FINAL WHERE removed = 0"), "0\n");
}

TEST(ClickHouseStore, CanDeleteRemovedRowsOfMergedTables) {
    const std::string url = MakeDatabaseUrl();
    const auto store = OpenClickHouseStore(url);
    store->Migrate();
    Write(*store, OneInventory(100));
    Write(*store, OneInventory(200));
    TBatch removal;
    removal.removedInventories = {{{Id(1), EScope::hardware}, 100}};
    Write(*store, removal);
    const auto count = [&url] { return ReadView(url, "SELECT count() FROM inventory_rows"); };
    auto client = Connect(url);

    client.Execute("OPTIMIZE TABLE inventory_rows FINAL");
    EXPECT_EQ(count(), "2\n");
    client.Execute("ALTER TABLE inventory_rows DELETE WHERE removed = 1");

    EXPECT_TRUE(NVORHOST::WaitUntil([&count] { return count() == "1\n"; }));
    EXPECT_THAT(store->ReadInventories({}), ElementsAre(OneInventory(200).inventories[0]));
    Write(*store, OneInventory(100));
    EXPECT_EQ(store->ReadInventories({}).size(), 2U);
}

// A batch of many rows, in which each machine has the same.
TBatch ManyRows(TSeconds time) {
    constexpr int machines = 50;
    constexpr std::uint8_t resources = 100;
    TBatch batch;
    batch.versions = {{Id(1), "Disk", "Disks", std::nullopt, {}}};
    for (int i = 0; i < machines; ++i) {
        TMachine machine;
        machine.id = MakeDigest(std::to_string(i));
        const TMachineScope place{machine.id, EScope::hardware};
        for (std::uint8_t resource = 0; resource < resources; ++resource) {
            batch.presences.push_back(
                {place, "Disk", Id(resource), always, time, Id(1), {{"S" + std::to_string(i)}}});
        }
        batch.machines.push_back(machine);
        batch.heads.push_back({place, time, Id(2), Id(3), {}});
        batch.inventories.push_back({place, time, Id(2), "path", {}});
    }
    return batch;
}

TEST(ClickHouseStore, CompletesABatchInWhichTheServerWasKilled) {
    TClickHouseServer server;
    server.Start();
    const auto store = OpenClickHouseStore(server.GetUrl());
    store->Migrate();
    TSeconds time = 0;
    for (const int milliseconds : {0, 3, 6, 12, 24}) {
        const TBatch batch = ManyRows(++time);
        store->BeginBatch();
        std::thread killer([&server, milliseconds] {
            std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
            server.Kill();
        });
        (void)FailureOf([&] { store->Write(batch); });  // the batch may have been faster
        killer.join();
        server.Start();
        Write(*store, batch);
        EXPECT_EQ(store->ReadInventories({}).size(), static_cast<std::size_t>(50 * time));
        EXPECT_EQ(store->ReadChanges({}).size(), 5000U);
        EXPECT_EQ(store->ReadChanges({{}, time - 1, time}).size(), 5000U);
        EXPECT_EQ(store->FindIdentity("S7").size(), 100U);
    }
}

TEST(ClickHouseStore, FailsInABatchWhoseServerHasEnded) {
    TClickHouseServer server;
    server.Start();
    const auto store = OpenClickHouseStore(server.GetUrl());
    store->Migrate();
    store->BeginBatch();
    server.Kill();
    EXPECT_THAT(FailureOf([&] { store->Write(OneMachine(1)); }), HasSubstr("Failed to connect"));
    server.Start();
    EXPECT_THAT(store->ReadMachines(), IsEmpty());
    Write(*store, OneMachine(1));
    EXPECT_THAT(store->ReadMachines(), ElementsAre(Machine(1)));
}

// Mounts a small file system; nullopt where that is not permitted.
class TSmallDisk {
  public:
    explicit TSmallDisk(const std::string& path)
        : path_(path), isMounted_(::mount("tmpfs", path.c_str(), "tmpfs", 0, "size=4m") == 0) {}
    ~TSmallDisk() {
        if (isMounted_) {
            (void)::umount2(path_.c_str(), MNT_DETACH);
        }
    }
    TSmallDisk(const TSmallDisk&) = delete;
    TSmallDisk& operator=(const TSmallDisk&) = delete;

    bool IsMounted() const { return isMounted_; }

  private:
    std::string path_;
    bool isMounted_;
};

TEST(ClickHouseStore, ReportsAFullDisk) {
    TClickHouseServer server;
    const TSmallDisk disk(server.GetData());
    if (!disk.IsMounted()) {
        GTEST_SKIP() << "mounting is not permitted";
    }
    server.Start();
    const auto store = OpenClickHouseStore(server.GetUrl());
    store->Migrate();
    TBatch batch = OneMachine(1);
    Write(*store, batch);
    for (std::uint8_t i = 0; i < 100; ++i) {
        std::string text;
        for (int part = 0; part < 4096; ++part) {
            text += ToText(MakeDigest(std::to_string(part * 256 + i)));
        }
        batch.inventories.push_back({{Id(1), EScope::hardware}, i, Id(i), text, {}});
    }
    EXPECT_THAT(FailureOf([&] { Write(*store, batch); }), HasSubstr("ClickHouse at "));
    EXPECT_THAT(store->ReadMachines(), ElementsAre(Machine(1)));
    server.Kill();
}

}  // namespace
}  // namespace NFLEET
