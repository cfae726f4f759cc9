// Several batches, loaders and queries on a store, for every engine.
#include "stores_of_tests.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>
#include <thread>

namespace NFLEET {
namespace {

using NINVENTORY::EShape;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr EScope hardware = EScope::hardware;
constexpr EScope snapshot = EScope::snapshot;

// A digest whose order is that of the numbers.
TDigest Id(std::uint8_t number) {
    TDigest digest;
    digest.bytes.fill(number);
    return digest;
}

TMachine Machine(std::uint8_t id, const std::string& model = "m", bool usesSnapshot = false) {
    TMachine machine;
    machine.id = Id(id);
    machine.key = "key" + std::to_string(id);
    machine.rule = EMachineRule::uuid;
    machine.facts = {"name" + std::to_string(id), "vendor", model, "serial", "uuid"};
    machine.first = 100;
    machine.last = 200;
    machine.usesSnapshot = usesSnapshot;
    return machine;
}

TMachineScope Place(std::uint8_t machine, EScope scope = hardware) {
    return {Id(machine), scope};
}

TPresence Presence(const TMachineScope& place, std::uint8_t resource, TSeconds since = always,
                   TSeconds until = open, std::uint8_t version = 1) {
    TPresence presence;
    presence.place = place;
    presence.resource = Id(resource);
    presence.type = "Disk";
    presence.since = since;
    presence.until = until;
    presence.version = Id(version);
    return presence;
}

TPresence WithIdentity(TPresence presence, TIdentity identity) {
    presence.identity = std::move(identity);
    return presence;
}

TInventory Inventory(const TMachineScope& place, TSeconds time) {
    TInventory inventory;
    inventory.place = place;
    inventory.time = time;
    inventory.digest = Id(static_cast<std::uint8_t>(time));
    inventory.source = "machines/" + std::to_string(time) + ".xml.gz";
    return inventory;
}

TVersion Version(std::uint8_t digest) {
    TVersion version;
    version.digest = Id(digest);
    version.type = "Disk";
    version.list = "Disks";
    version.properties = {{{"Size", "unsignedLong", EShape::scalar, {"1000"}}, false}};
    return version;
}

// Every byte that a format could treat specially.
std::string HostileText() {
    std::string text = "'\"`\\\t\r\n;--/**/ \xC3\xA9\xFF\xC0\x80{a:String}?";
    text.push_back('\0');
    return text + "\\N\\0\x1A\x7F";
}

class TStoreBatches : public testing::TestWithParam<const TTestEngine*> {
  protected:
    TStoreBatches() : place_(GetParam()->MakePlace()), store_(Open()) { store_->Migrate(); }

    std::unique_ptr<IFleetStore> Open() const { return place_->Open(); }

    // Writes a batch with the machines and versions that its rows refer to.
    void Write(TBatch batch) {
        for (const TVersion& version : batch.versions) {
            versions_.insert(version.digest);
        }
        for (const TPresence& presence : batch.presences) {
            AddMachine(batch, presence.place.machine);
            if (versions_.insert(presence.version).second) {
                batch.versions.push_back(VersionOf(presence));
            }
        }
        for (const TInventory& inventory : batch.inventories) {
            AddMachine(batch, inventory.place.machine);
        }
        store_->BeginBatch();
        store_->Write(batch);
    }
    void WritePresences(const std::vector<TPresence>& presences) {
        TBatch batch;
        batch.presences = presences;
        Write(batch);
    }
    std::vector<TPresence> ReadState(const TMachineScope& place) {
        return store_->ReadStates(std::vector{place}).at(0).presences;
    }

    std::unique_ptr<ITestPlace> place_;
    std::unique_ptr<IFleetStore> store_;

  private:
    static TVersion VersionOf(const TPresence& presence) {
        TVersion version = Version(presence.version.bytes[0]);
        version.type = presence.type;
        return version;
    }
    void AddMachine(TBatch& batch, const TMachineId& id) {
        const bool isThere = std::ranges::find(batch.machines, id, &TMachine::id) != batch.machines.end();
        if (machines_.insert(id).second && !isThere) {
            batch.machines.push_back(Machine(id.bytes[0]));
        }
    }

    std::set<TMachineId> machines_;
    std::set<TDigest> versions_;
};

std::string FailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const TStoreError& error) {
        return error.what();
    }
    return "none";
}

TEST_P(TStoreBatches, KeepsRowsInAMigrationToTheSameVersion) {
    TBatch batch;
    batch.machines = {Machine(1)};
    Write(batch);
    const auto again = Open();
    again->Migrate();
    EXPECT_THAT(again->ReadMachines(), ElementsAre(Machine(1)));
}

TEST_P(TStoreBatches, FindsNothingForNoKeys) {
    TBatch batch;
    batch.machines = {Machine(1)};
    batch.versions = {Version(1)};
    batch.inventories = {Inventory(Place(1), 100)};
    Write(batch);
    EXPECT_THAT(store_->FindMachines({}), IsEmpty());
    EXPECT_THAT(store_->ReadHeads({}), IsEmpty());
    EXPECT_THAT(store_->FindInventories({}), IsEmpty());
    EXPECT_THAT(store_->ReadStates({}), IsEmpty());
    EXPECT_THAT(store_->FindKnownVersions({}), IsEmpty());
    EXPECT_THAT(store_->ReadVersions({}), IsEmpty());
    EXPECT_THAT(store_->FindPresences({}, std::nullopt), IsEmpty());
}

TEST_P(TStoreBatches, FindsMachinesAmongManyIds) {
    TBatch batch;
    batch.machines = {Machine(1), Machine(255)};
    Write(batch);
    std::vector<TDigest> ids{Id(255), Id(1)};
    for (int i = 0; i < 20'000; ++i) {
        ids.push_back(MakeDigest(std::to_string(i)));
    }
    EXPECT_THAT(store_->FindMachines(ids), ElementsAre(Machine(1), Machine(255)));
}

TEST_P(TStoreBatches, ReadsInventoriesOfASpanAndAScope) {
    TBatch batch;
    batch.inventories = {Inventory(Place(2), 100), Inventory(Place(1), 30), Inventory(Place(1), 10),
                         Inventory(Place(1), 20), Inventory(Place(1, snapshot), 20)};
    Write(batch);
    TInventoryQuery query;
    EXPECT_THAT(store_->ReadInventories(query),
                ElementsAre(Inventory(Place(1), 10), Inventory(Place(1), 20), Inventory(Place(1), 30),
                            Inventory(Place(1, snapshot), 20), Inventory(Place(2), 100)));
    query.since = 20;
    query.until = 100;
    EXPECT_THAT(store_->ReadInventories(query), ElementsAre(Inventory(Place(1), 20), Inventory(Place(1), 30),
                                                            Inventory(Place(1, snapshot), 20)));
    query.scope = hardware;
    query.newestOnly = true;
    EXPECT_THAT(store_->ReadInventories(query), ElementsAre(Inventory(Place(1), 30)));
    TInventoryQuery newest;
    newest.newestOnly = true;
    newest.machine = Id(1);
    EXPECT_THAT(store_->ReadInventories(newest),
                ElementsAre(Inventory(Place(1), 30), Inventory(Place(1, snapshot), 20)));
}

TEST_P(TStoreBatches, ReplacesAndRemovesInventories) {
    TBatch batch;
    batch.inventories = {Inventory(Place(1), 10), Inventory(Place(1), 20)};
    Write(batch);
    TInventory other = Inventory(Place(1), 10);
    other.digest = Id(77);
    other.source = "elsewhere";
    TBatch change;
    change.removedInventories = {{Place(1), 20}};
    change.inventories = {other};
    Write(change);
    EXPECT_THAT(store_->ReadInventories({}), ElementsAre(other));
    Write(batch);
    EXPECT_THAT(store_->ReadInventories({}), ElementsAre(Inventory(Place(1), 10), Inventory(Place(1), 20)));
}

TEST_P(TStoreBatches, ReadsStatesInTheOrderOfThePlaces) {
    TBatch batch;
    batch.presences = {Presence(Place(1), 2), Presence(Place(1), 1, 50), Presence(Place(1), 1, always, 50),
                       Presence(Place(2), 1), Presence(Place(1, snapshot), 1)};
    TInventory withValues = Inventory(Place(1), 20);
    withValues.volatileValues = {{Id(1), 3, {"Free", "string", EShape::scalar, {"12"}}}};
    batch.inventories = {withValues, Inventory(Place(1), 10), Inventory(Place(2), 10)};
    Write(batch);
    const auto states = store_->ReadStates(std::vector{Place(2), Place(7), Place(1)});
    ASSERT_EQ(states.size(), 3U);
    EXPECT_EQ(states[0].place, Place(2));
    EXPECT_THAT(states[0].presences, ElementsAre(Presence(Place(2), 1)));
    EXPECT_THAT(states[0].inventories, ElementsAre(Inventory(Place(2), 10)));
    EXPECT_EQ(states[1].place, Place(7));
    EXPECT_TRUE(states[1].presences.empty() && states[1].inventories.empty());
    EXPECT_THAT(states[2].presences, ElementsAre(Presence(Place(1), 1, always, 50), Presence(Place(1), 1, 50),
                                                 Presence(Place(1), 2)));
    EXPECT_THAT(states[2].inventories, ElementsAre(Inventory(Place(1), 10), Inventory(Place(1), 20)));
}

TEST_P(TStoreBatches, ReplacesAndRemovesPresences) {
    WritePresences({Presence(Place(1), 1), Presence(Place(1), 2)});
    TBatch batch;
    batch.presences = {Presence(Place(1), 1, always, 50, 1), Presence(Place(1), 1, 50, open, 2)};
    batch.removedPresences = {Presence(Place(1), 2).GetKey()};
    Write(batch);
    EXPECT_THAT(ReadState(Place(1)),
                ElementsAre(Presence(Place(1), 1, always, 50, 1), Presence(Place(1), 1, 50, open, 2)));
    WritePresences({Presence(Place(1), 2, always, 70)});
    EXPECT_EQ(ReadState(Place(1)).back(), Presence(Place(1), 2, always, 70));
}

TEST_P(TStoreBatches, DistinguishesResourcesByTypeAndScope) {
    TPresence other = Presence(Place(1), 1, always, open, 5);
    other.type = "Adapter";
    WritePresences({Presence(Place(1), 1), other, Presence(Place(1, snapshot), 1)});
    EXPECT_THAT(ReadState(Place(1)), ElementsAre(other, Presence(Place(1), 1)));
    EXPECT_THAT(ReadState(Place(1, snapshot)), ElementsAre(Presence(Place(1, snapshot), 1)));
}

TEST_P(TStoreBatches, ChangesNothingWhenABatchIsWrittenAgain) {
    TBatch batch;
    batch.versions = {Version(1)};
    batch.presences = {WithIdentity(Presence(Place(1), 1), {{"S1"}})};
    batch.aliases = {{Id(3), "c", Id(1)}};
    batch.machines = {Machine(1)};
    batch.heads = {{Place(1), 100, Id(5), Id(6), {}}};
    batch.inventories = {Inventory(Place(1), 100)};
    batch.sources = {{7, 8, 9}};
    for (int i = 0; i < 3; ++i) {
        Write(batch);
        EXPECT_EQ(ReadState(Place(1)), batch.presences);
        EXPECT_EQ(store_->FindIdentity("S1"), batch.presences);
        EXPECT_EQ(store_->ReadMachines(), batch.machines);
        EXPECT_EQ(store_->FindAliases(std::vector{batch.aliases[0].from}), batch.aliases);
        EXPECT_EQ(store_->ReadHeads(std::vector{Id(1)}), batch.heads);
        EXPECT_EQ(store_->ReadInventories({}), batch.inventories);
        EXPECT_EQ(store_->FindSources(std::vector<std::uint64_t>{7}), batch.sources);
        EXPECT_EQ(store_->ReadVersions(std::vector{Id(1)}), batch.versions);
        EXPECT_THAT(store_->CountVersions({}), ElementsAre(TVersionCount{"m", "Disk", Id(1), 1, 1}));
    }
}

TEST_P(TStoreBatches, RemovesAMachineWithAllItsRows) {
    TBatch batch;
    for (const std::uint8_t id : {std::uint8_t{1}, std::uint8_t{2}}) {
        batch.machines.push_back(Machine(id));
        batch.presences.push_back(WithIdentity(Presence(Place(id), 1), {{"S"}}));
        batch.heads.push_back({Place(id), 100, Id(5), Id(6), {}});
        batch.inventories.push_back(Inventory(Place(id), 100));
    }
    Write(batch);
    TBatch removal;
    removal.removedMachines = {Id(1)};
    Write(removal);
    EXPECT_THAT(store_->ReadMachines(), ElementsAre(Machine(2)));
    EXPECT_THAT(store_->ReadInventories({}), ElementsAre(Inventory(Place(2), 100)));
    EXPECT_THAT(ReadState(Place(1)), IsEmpty());
    EXPECT_THAT(ReadState(Place(2)), ElementsAre(batch.presences[1]));
    EXPECT_THAT(store_->ReadHeads(std::vector{Id(1)}), IsEmpty());
    EXPECT_THAT(store_->FindIdentity("S"), ElementsAre(batch.presences[1]));
    Write(batch);
    EXPECT_THAT(store_->ReadMachines(), ElementsAre(Machine(1), Machine(2)));
    EXPECT_THAT(ReadState(Place(1)), ElementsAre(batch.presences[0]));
}

TEST_P(TStoreBatches, RemovesVersionsThatNothingRefersTo) {
    TBatch batch;
    batch.versions = {Version(1), Version(2), Version(3)};
    batch.presences = {Presence(Place(1), 1, always, 50, 2), Presence(Place(1), 1, 50, open, 3)};
    Write(batch);
    TBatch removal;
    removal.removedPresences = {Presence(Place(1), 1, 50).GetKey()};
    Write(removal);
    const auto removed = store_->RemoveUnusedVersions();
    if (removed) {
        EXPECT_EQ(*removed, 2U);
        EXPECT_THAT(store_->FindKnownVersions(std::vector{Id(1), Id(2), Id(3)}), ElementsAre(Id(2)));
        EXPECT_EQ(store_->RemoveUnusedVersions(), 0U);
    }
    Write(batch);
    EXPECT_THAT(store_->ReadVersions(std::vector{Id(1)}), ElementsAre(Version(1)));
}

TEST_P(TStoreBatches, ReadsRowsThatBeginOrEndInASpan) {
    const TPresence first = Presence(Place(1), 1, always, 50, 1);
    const TPresence second = Presence(Place(1), 1, 50, 80, 2);
    const TPresence third = Presence(Place(1), 1, 80, open, 3);
    const TPresence other = Presence(Place(2), 1, 60, open, 3);
    WritePresences({first, second, third, other, Presence(Place(1), 2)});
    EXPECT_THAT(store_->ReadChanges({}), ElementsAre(first, second, third, other));
    EXPECT_THAT(store_->ReadChanges({{}, 50, open}), ElementsAre(second, third, other));
    EXPECT_THAT(store_->ReadChanges({{}, 49, 50}), ElementsAre(first, second));
    EXPECT_THAT(store_->ReadChanges({{}, 50, 79}), ElementsAre(other));
    EXPECT_THAT(store_->ReadChanges({Id(1), 79, open}), ElementsAre(second, third));
    EXPECT_THAT(store_->ReadChanges({{}, 80, open}), IsEmpty());
    TBatch removal;
    removal.removedPresences = {third.GetKey()};
    removal.presences = {Presence(Place(1), 1, 50, open, 2)};
    Write(removal);
    EXPECT_THAT(store_->ReadChanges({{}, 60, open}), IsEmpty());
}

TEST_P(TStoreBatches, FindsEveryRowWithAnIdentifyingValue) {
    const TPresence moved = WithIdentity(Presence(Place(1), 1, always, 50), {{}, {"a", "S1"}});
    const TPresence here = WithIdentity(Presence(Place(2), 2, 60), {{"S1"}, {}});
    WritePresences({here, moved, WithIdentity(Presence(Place(1), 3), {{"S10"}, {"s1"}, {""}})});
    EXPECT_THAT(store_->FindIdentity("S1"), ElementsAre(moved, here));
    EXPECT_THAT(store_->FindIdentity("S"), IsEmpty());
    EXPECT_THAT(store_->FindIdentity("' OR 1 = 1 --"), IsEmpty());
    TBatch removal;
    removal.removedPresences = {moved.GetKey()};
    removal.presences = {WithIdentity(Presence(Place(2), 2, 60), {{"S2"}, {}})};
    Write(removal);
    EXPECT_THAT(store_->FindIdentity("S1"), IsEmpty());
    EXPECT_THAT(store_->FindIdentity("S2"), ElementsAre(removal.presences[0]));
}

TEST_P(TStoreBatches, KeepsHostileTexts) {
    const std::string text = HostileText();
    TMachine machine = Machine(1, text);
    machine.key = text;
    machine.facts = {text, text, text, text, text};
    TPresence presence = WithIdentity(Presence(Place(1), 1), {{text}});
    presence.type = text;
    TVersion version = Version(1);
    version.type = version.list = text;
    version.id = text;
    version.properties = {{{text, text, EShape::array, {text, ""}}, false}};
    TInventory inventory = Inventory(Place(1), 100);
    inventory.source = text;
    TBatch batch;
    batch.machines = {machine};
    batch.presences = {presence};
    batch.versions = {version};
    batch.inventories = {inventory};
    batch.aliases = {{Id(2), text, Id(1)}};
    batch.heads = {{Place(1), 100, Id(5), Id(6), machine.facts}};
    Write(batch);
    EXPECT_EQ(store_->ReadMachines(), batch.machines);
    EXPECT_EQ(store_->FindAliases(std::vector{batch.aliases[0].from}), batch.aliases);
    EXPECT_EQ(store_->ReadHeads(std::vector{Id(1)}), batch.heads);
    EXPECT_EQ(store_->ReadInventories({}), batch.inventories);
    EXPECT_EQ(store_->ReadVersions(std::vector{Id(1)}), batch.versions);
    EXPECT_EQ(store_->FindIdentity(text), batch.presences);
    EXPECT_THAT(store_->CountVersions({text, {text}}), ElementsAre(TVersionCount{text, text, Id(1), 1, 1}));
    EXPECT_EQ(store_->FindPresences(std::vector{Id(1)}, text), batch.presences);
}

TEST_P(TStoreBatches, KeepsTimesOfEveryCentury) {
    constexpr TSeconds past = -10'000'000'000;
    constexpr TSeconds future = 253'402'300'799;  // the year 9999
    TBatch batch;
    batch.inventories = {Inventory(Place(1), past), Inventory(Place(1), future)};
    batch.presences = {Presence(Place(1), 1, always, future), Presence(Place(1), 1, future, open, 2)};
    Write(batch);
    EXPECT_EQ(store_->ReadInventories({}), batch.inventories);
    EXPECT_EQ(ReadState(Place(1)), batch.presences);
    EXPECT_THAT(store_->ReadChanges({{}, future - 1, open}), ElementsAreArray(batch.presences));
}

TEST_P(TStoreBatches, ForgetsAnAbandonedBatch) {
    store_->BeginBatch();
    store_->AbandonBatch();
    store_->AbandonBatch();
    TBatch batch;
    batch.machines = {Machine(1)};
    Write(batch);
    EXPECT_THAT(store_->ReadMachines(), ElementsAre(Machine(1)));
}

TEST_P(TStoreBatches, AcceptsAnEmptyBatch) {
    Write({});
    EXPECT_THAT(store_->ReadMachines(), IsEmpty());
}

TEST_P(TStoreBatches, KeepsLoadersApart) {
    constexpr int loaders = 2;
    constexpr int rounds = 10;
    TBatch batch;
    batch.machines = {Machine(1)};
    batch.machines[0].last = 0;
    Write(batch);
    const auto count = [this] {
        const auto store = Open();
        for (int i = 0; i < rounds; ++i) {
            store->BeginBatch();
            TBatch next;
            next.machines = store->FindMachines(std::vector{Id(1)});
            ++next.machines.at(0).last;
            store->Write(next);
        }
    };
    std::vector<std::thread> threads;
    threads.reserve(loaders);
    for (int i = 0; i < loaders; ++i) {
        threads.emplace_back(count);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(store_->ReadMachines().at(0).last, loaders * rounds);
}

// The rows of a query.
class TCollectedRows : public ISqlRows {
  public:
    explicit TCollectedRows(std::size_t most = 1000) : most_(most) {}
    void BeginRows(const std::vector<std::string>& names) override { columns = names; }
    bool AddRow(const std::vector<TSqlValue>& values) override {
        rows.push_back(values);
        return rows.size() < most_;
    }

    std::vector<std::string> columns;
    std::vector<std::vector<TSqlValue>> rows;

  private:
    std::size_t most_;
};

TEST_P(TStoreBatches, PassesTheRowsOfAQuery) {
    TCollectedRows answer;
    store_->RunSql(
        "SELECT 1 AS a, -2.5 AS b, NULL AS c, 'x\ty' AS \"d e\" UNION ALL SELECT 1, -2.5, NULL, 'x\ty'",
        answer);
    EXPECT_THAT(answer.columns, ElementsAre("a", "b", "c", "d e"));
    const std::vector<TSqlValue> row{std::int64_t{1}, -2.5, std::monostate(), "x\ty"};
    EXPECT_THAT(answer.rows, ElementsAre(row, row));
}

TEST_P(TStoreBatches, EndsAQueryWhenNoMoreRowsAreWanted) {
    TCollectedRows answer(1);
    store_->RunSql("SELECT 1 AS a UNION ALL SELECT 1 UNION ALL SELECT 1", answer);
    EXPECT_EQ(answer.rows.size(), 1U);
}

TEST_P(TStoreBatches, PassesColumnsWithoutRows) {
    TCollectedRows answer;
    store_->RunSql("SELECT 1 AS a WHERE 1 = 0", answer);
    EXPECT_THAT(answer.columns, ElementsAre("a"));
    EXPECT_THAT(answer.rows, IsEmpty());
}

TEST_P(TStoreBatches, RejectsStatementsThatWouldWrite) {
    TBatch batch;
    batch.machines = {Machine(1)};
    Write(batch);
    for (const char* statement : {"DELETE FROM machine", "DROP TABLE machine", "CREATE TABLE t (a int)",
                                  "INSERT INTO machine VALUES (1)", "UPDATE machine SET key = ''",
                                  "SELECT 1; DROP TABLE machine", "SELECT 1; SELECT 2", "SELEC 1", ""}) {
        TCollectedRows answer;
        EXPECT_NE(FailureOf([&] { store_->RunSql(statement, answer); }), "none") << statement;
        EXPECT_THAT(answer.rows, IsEmpty()) << statement;
    }
    EXPECT_THAT(store_->ReadMachines(), ElementsAre(Machine(1)));
}

INSTANTIATE_TEST_SUITE_P(Engines, TStoreBatches, testing::ValuesIn(GetTestEngines()),
                         [](const auto& test) { return test.param->GetName(); });

}  // namespace
}  // namespace NFLEET
