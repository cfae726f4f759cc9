// The engine on a cluster of two servers, each with a shard.
#include "clickhouse_server.h"
#include "fleet/clickhouse/clickhouse_store.h"
#include "fleet/clickhouse/client.h"
#include "fleet/clickhouse/schema.h"
#include "tests/fleet/store/store_contract.h"
#include "text/lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>

namespace NFLEET {
namespace {

using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;

TClickHouseClient Connect(const std::string& url) {
    return {ParseClickHouseAddress(url), OpenHttp({})};
}

// Two servers that know each other as the shards of the cluster "fleet".
class TCluster {
  public:
    TCluster() {
        for (TClickHouseServer& server : servers_) {
            settings_.shards.push_back(server.GetPorts());
        }
        for (std::size_t i = 0; i < servers_.size(); ++i) {
            Start(i);
        }
    }

    void Start(std::size_t server) { servers_.at(server).Start(settings_); }
    void Kill(std::size_t server) { servers_.at(server).Kill(); }
    std::string GetUrl(std::size_t server, const std::string& database) const {
        return servers_.at(server).GetUrl(database);
    }
    // Runs the printed schema on every server, as an operator does.
    void MakeTables(const std::string& database) const {
        const std::string text = SchemaText("fleet", database);
        for (const TClickHouseServer& server : servers_) {
            auto client = Connect(server.GetUrl("default"));
            NVORHOST::ForEachLine(text, [&client](std::string_view line) {
                if (line.ends_with(';')) {
                    client.Execute(line.substr(0, line.size() - 1));
                }
            });
        }
    }

  private:
    std::array<TClickHouseServer, 2> servers_;
    TClickHouseSettings settings_;
};

TCluster& GetCluster() {
    static TCluster cluster;
    return cluster;
}

std::string MakeClusterDatabase() {
    static int number = 0;
    const std::string database = "cluster" + std::to_string(++number);
    GetCluster().MakeTables(database);
    return database;
}

std::unique_ptr<IFleetStore> MakeStore() {
    return OpenClickHouseStore(GetCluster().GetUrl(0, MakeClusterDatabase()));
}

INSTANTIATE_TEST_SUITE_P(Cluster, FleetStore, testing::Values(TStoreMaker{"cluster", MakeStore}),
                         testing::PrintToStringParamName());

std::string FailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const TStoreError& error) {
        return error.what();
    }
    return "none";
}

constexpr int machines = 40;

TDigest Number(int number) {
    return MakeDigest(std::to_string(number));
}

// Two inventories of many machines, of which a resource changes.
TBatch ManyMachines() {
    TBatch batch;
    for (int version = 1; version <= 2; ++version) {
        batch.versions.push_back({Number(version), "Disk", "Disks", std::nullopt, {}});
    }
    for (int i = 0; i < machines; ++i) {
        TMachine machine;
        machine.id = MakeDigest("machine" + std::to_string(i));
        machine.facts.model = "model";
        const TMachineScope place{machine.id, EScope::hardware};
        batch.presences.push_back(
            {place, "Disk", Number(1), always, 20, Number(1), {{"S" + std::to_string(i)}}});
        batch.presences.push_back(
            {place, "Disk", Number(1), 20, open, Number(2), {{"T" + std::to_string(i)}}});
        batch.machines.push_back(machine);
        batch.heads.push_back({place, 20, Number(2), Number(3), {}});
        batch.inventories.push_back({place, 10, Number(1), "path", {}});
        batch.inventories.push_back({place, 20, Number(2), "path", {}});
    }
    return batch;
}

void Write(IFleetStore& store, const TBatch& batch) {
    store.BeginBatch();
    store.Write(batch);
}

// Everything that a store answers about ManyMachines.
void ExpectManyMachines(IFleetStore& store) {
    const TBatch batch = ManyMachines();
    EXPECT_EQ(store.ReadMachines().size(), batch.machines.size());
    EXPECT_EQ(store.ReadInventories({}).size(), batch.inventories.size());
    EXPECT_EQ(store.ReadChanges({}).size(), batch.presences.size());
    EXPECT_EQ(store.CountVersions({}),
              (std::vector{TVersionCount{"model", "Disk", Number(2), machines, machines}}));
    EXPECT_EQ(store.FindIdentity("S7").size(), 1U);
    EXPECT_EQ(store.ReadVersions(std::vector{Number(1), Number(2)}).size(), 2U);
}

// Returns the numbers of rows in the views.
std::string CountViewRows(const std::string& url) {
    std::string counts;
    for (const char* view : {"machine", "inventories", "resources", "properties", "changes"}) {
        counts += Connect(url).SelectText("SELECT count() FROM " + std::string(view), "TabSeparated", {});
    }
    return counts;
}

TEST(ClickHouseCluster, DividesMachinesAmongItsShards) {
    const std::string database = MakeClusterDatabase();
    Write(*OpenClickHouseStore(GetCluster().GetUrl(0, database)), ManyMachines());
    const std::string query = "SELECT count(), uniqExact(machine) FROM presence_local";
    int sum = 0;
    for (const std::size_t server : {0U, 1U}) {
        const std::string counts =
            Connect(GetCluster().GetUrl(server, database)).SelectText(query, "TabSeparated", {});
        const auto [rows, ids] = NVORHOST::SplitAt(counts, '\t');
        EXPECT_EQ(std::stoi(std::string(rows)), std::stoi(std::string(ids)));
        EXPECT_GT(std::stoi(std::string(ids)), 0);
        sum += std::stoi(std::string(ids));
    }
    EXPECT_EQ(sum, machines);
}

TEST(ClickHouseCluster, AnswersTheSameThroughEveryServer) {
    const std::string database = MakeClusterDatabase();
    const auto first = OpenClickHouseStore(GetCluster().GetUrl(0, database));
    Write(*first, ManyMachines());
    ExpectManyMachines(*first);
    const auto second = OpenClickHouseStore(GetCluster().GetUrl(1, database));
    ExpectManyMachines(*second);
    EXPECT_EQ(second->ReadChanges({}), first->ReadChanges({}));
    EXPECT_EQ(CountViewRows(GetCluster().GetUrl(1, database)), "40\n80\n80\n0\n80\n");
}

TEST(ClickHouseCluster, KeepsTheTablesInAMigration) {
    const std::string database = MakeClusterDatabase();
    const auto store = OpenClickHouseStore(GetCluster().GetUrl(1, database));
    EXPECT_EQ(store->GetSchemaVersion(), clickHouseSchemaVersion);
    store->Migrate();
    EXPECT_EQ(Connect(GetCluster().GetUrl(1, database))
                  .SelectText("SELECT engine FROM system.tables WHERE database = '" + database +
                                  "' AND name = 'presence_rows'",
                              "TabSeparated", {}),
              "Distributed\n");
}

TEST(ClickHouseCluster, IsBroughtUpToDateByThePrintedStatements) {
    const std::string database = MakeClusterDatabase();
    for (const std::size_t server : {0U, 1U}) {
        auto client = Connect(GetCluster().GetUrl(server, database));
        for (const char* table : {"layout_rows", "layout_local", "changes", "fleet_schema"}) {
            client.Execute("DROP TABLE " + std::string(table));
        }
        client.Execute("CREATE TABLE fleet_schema (version UInt32) ENGINE = MergeTree ORDER BY version");
        client.Execute("INSERT INTO fleet_schema VALUES (" + std::to_string(clickHouseSchemaVersion - 1) +
                       ")");
    }
    const std::string url = GetCluster().GetUrl(0, database);
    const auto store = OpenClickHouseStore(url);
    EXPECT_EQ(FailureOf([&] { store->Migrate(); }),
              url +
                  " is a cluster with tables of an older version; run what 'noxinfo fleet schema --cluster "
                  "NAME' prints on each of its servers");
    EXPECT_EQ(Connect(url).SelectText("EXISTS TABLE layout_rows", "TabSeparated", {}), "0\n");

    GetCluster().MakeTables(database);

    store->Migrate();
    EXPECT_EQ(store->GetSchemaVersion(), clickHouseSchemaVersion);
    Write(*store, ManyMachines());
    ExpectManyMachines(*store);
    EXPECT_EQ(CountViewRows(url), "40\n80\n80\n0\n80\n");
}

// Returns the failures of all questions.
std::vector<std::string> AskEverything(IFleetStore& store) {
    const std::vector ids{Number(1), MakeDigest("machine1")};
    const std::vector<TMachineScope> places{{ids[1], EScope::hardware}};
    const std::vector<TInventoryKey> keys{{places[0], 10}};
    const std::vector<std::function<void()>> questions{
        [&] { (void)store.ReadMachines(); },
        [&] { (void)store.FindAliases(ids); },
        [&] {
            (void)store.FindSources(std::vector<std::uint64_t>{1, 2, 3});
        },
        [&] { (void)store.ReadAliasesOf(ids[1]); },
        [&] { (void)store.FindMachines(ids); },
        [&] { (void)store.ReadHeads(ids); },
        [&] { (void)store.FindInventories(keys); },
        [&] { (void)store.ReadStates(places); },
        [&] { (void)store.FindKnownVersions(ids); },
        [&] { (void)store.ReadInventories({}); },
        [&] { (void)store.ReadPresences(places[0], 10); },
        [&] { (void)store.ReadChanges({}); },
        [&] { (void)store.FindIdentity("S7"); },
        [&] { (void)store.CountVersions({}); },
        [&] { (void)store.CountParts({.model = std::nullopt, .types = {"Disk"}}); },
        [&] { (void)store.FindPresences(ids, std::nullopt); },
        [&] { (void)store.ReadVersions(ids); },
    };
    std::vector<std::string> failures;
    failures.reserve(questions.size());
    for (const auto& question : questions) {
        failures.push_back(FailureOf(question));
    }
    return failures;
}

TEST(ClickHouseCluster, FailsRatherThanAnswersInPart) {
    TCluster cluster;
    cluster.MakeTables("fleet");
    const auto store = OpenClickHouseStore(cluster.GetUrl(0, "fleet"));
    Write(*store, ManyMachines());
    EXPECT_THAT(AskEverything(*store), Each("none"));
    cluster.Kill(1);
    EXPECT_THAT(AskEverything(*store), Each(HasSubstr("ClickHouse at 127.0.0.1:")));
}

TEST(ClickHouseCluster, CompletesABatchInWhichAShardWasDown) {
    TCluster cluster;
    cluster.MakeTables("fleet");
    const auto store = OpenClickHouseStore(cluster.GetUrl(0, "fleet"));
    store->BeginBatch();
    cluster.Kill(1);
    EXPECT_THAT(FailureOf([&] { store->Write(ManyMachines()); }), HasSubstr("ClickHouse at 127.0.0.1:"));
    cluster.Start(1);
    EXPECT_THAT(store->ReadInventories({}), IsEmpty());
    for (int i = 0; i < 2; ++i) {
        Write(*store, ManyMachines());
        ExpectManyMachines(*store);
    }
}

// Returns the number of rows in the table of one server.
std::string CountLocalRows(std::size_t server, const std::string& database) {
    return Connect(GetCluster().GetUrl(server, database))
        .SelectText("SELECT count() FROM presence_local", "TabSeparated", {});
}

TEST(ClickHouseCluster, CompletesABatchThatOneShardHasStored) {
    const std::string database = MakeClusterDatabase();
    const auto store = OpenClickHouseStore(GetCluster().GetUrl(0, database));
    auto other = Connect(GetCluster().GetUrl(1, database));
    other.Execute(
        "CREATE MATERIALIZED VIEW failing ENGINE = Null AS SELECT throwIf(scope = 1) AS a FROM "
        "presence_local");
    EXPECT_NE(FailureOf([&] { Write(*store, ManyMachines()); }), "none");
    EXPECT_NE(CountLocalRows(0, database), "0\n");
    other.Execute("DROP TABLE failing");
    EXPECT_THAT(store->ReadInventories({}), IsEmpty());
    for (int i = 0; i < 2; ++i) {
        Write(*store, ManyMachines());
        ExpectManyMachines(*store);
    }
}

TEST(ClickHouseSchema, RejectsNamesThatWouldNeedQuotes) {
    EXPECT_NE(FailureOf([] { (void)SchemaText("fleet; DROP", "fleet"); }), "none");
    EXPECT_NE(FailureOf([] { (void)SchemaText("fleet", ""); }), "none");
}

}  // namespace
}  // namespace NFLEET
