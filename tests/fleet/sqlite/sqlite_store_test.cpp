// The engine SQLite: the contract, and what only a file has.
#include "fleet/sqlite/sqlite_store.h"

#include "fleet/sqlite/connection.h"
#include "tests/fleet/store/store_contract.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace NFLEET {
namespace {

using ::testing::HasSubstr;

namespace fs = std::filesystem;

// A directory that is removed with everything in it.
class TTestFolder {
  public:
    TTestFolder() {
        std::string path = (fs::temp_directory_path() / "noxinfo-sqlite-XXXXXX").string();
        path_ = ::mkdtemp(path.data());
    }
    ~TTestFolder() {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    TTestFolder(const TTestFolder&) = delete;
    TTestFolder& operator=(const TTestFolder&) = delete;

    std::string GetPath(const std::string& name) const { return (path_ / name).string(); }

  private:
    fs::path path_;
};

const TTestFolder& GetFolder() {
    static const TTestFolder folder;
    return folder;
}

std::unique_ptr<IFleetStore> MakeStore() {
    static int count = 0;
    return OpenSqliteStore(GetFolder().GetPath("contract-" + std::to_string(++count) + ".db"));
}

void Execute(const std::string& path, const std::string& sql) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(database);
    sqlite3_close(database);
}

template <typename TAction>
std::string CatchMessage(TAction action) {
    try {
        action();
    } catch (const TStoreError& error) {
        return error.what();
    }
    return "no error";
}

TBatch MakeBatch(const std::string& name) {
    TBatch batch;
    batch.machines = {{MakeDigest(name), name, EMachineRule::path, {name, "", "", "", ""}, 1, 1, false}};
    return batch;
}

TEST(SqliteStore, CreatesADatabaseWithItsVersion) {
    const std::string path = GetFolder().GetPath("new.db");
    const auto store = OpenSqliteStore(path);
    EXPECT_EQ(store->GetSchemaVersion(), 0);

    store->Migrate();

    EXPECT_EQ(store->GetSchemaVersion(), 1);
    EXPECT_EQ(store->GetName(), path);
}

TEST(SqliteStore, RefusesQuestionsToAnEmptyFile) {
    const std::string path = GetFolder().GetPath("empty.db");
    const auto store = OpenSqliteStore(path);

    EXPECT_EQ(CatchMessage([&] { store->ReadMachines(); }), path + ": holds no inventories yet");
}

TEST(SqliteStore, RefusesAFileThatIsNotADatabase) {
    const std::string path = GetFolder().GetPath("letter.txt");
    std::ofstream(path) << "Dear Sir or Madam, this is not a database, but long enough to have a header.";

    EXPECT_EQ(CatchMessage([&] { OpenSqliteStore(path); }), path + ": file is not a database");
}

TEST(SqliteStore, RefusesTheDatabaseOfAnotherProgram) {
    const std::string path = GetFolder().GetPath("other.db");
    Execute(path, "CREATE TABLE song(title TEXT)");

    EXPECT_EQ(CatchMessage([&] { OpenSqliteStore(path); }), path + ": is a database of another program");
}

TEST(SqliteStore, RefusesADatabaseOfANewerVersion) {
    const std::string path = GetFolder().GetPath("newer.db");
    OpenSqliteStore(path)->Migrate();
    Execute(path, "PRAGMA user_version = 7");
    const std::string message = path +
                                ": was made by a newer version of this program: its schema is version 7, and "
                                "this program reads version 1";

    const auto store = OpenSqliteStore(path);

    EXPECT_EQ(CatchMessage([&] { store->Migrate(); }), message);
    EXPECT_EQ(CatchMessage([&] { store->ReadMachines(); }), message);
    EXPECT_EQ(store->GetSchemaVersion(), 7);
}

TEST(SqliteStore, RefusesAMissingDirectory) {
    const std::string path = GetFolder().GetPath("missing/fleet.db");

    EXPECT_EQ(CatchMessage([&] { OpenSqliteStore(path); }),
              path + ": cannot be opened: unable to open database file");
}

TEST(SqliteStore, ShowsWhatAnotherConnectionWrote) {
    const std::string path = GetFolder().GetPath("shared.db");
    const auto first = OpenSqliteStore(path);
    first->Migrate();
    const auto second = OpenSqliteStore(path);
    second->Migrate();

    first->BeginBatch();
    first->Write(MakeBatch("a"));
    second->BeginBatch();
    second->Write(MakeBatch("b"));

    EXPECT_EQ(first->ReadMachines().size(), 2U);
    EXPECT_EQ(second->ReadMachines().size(), 2U);
}

TEST(SqliteStore, ReadsOfOneMomentWhileOthersWrite) {
    const std::string path = GetFolder().GetPath("moment.db");
    const auto writer = OpenSqliteStore(path);
    writer->Migrate();
    const auto reader = OpenSqliteStore(path);
    {
        const TReading reading(*reader);
        EXPECT_EQ(reader->ReadMachines().size(), 0U);
        writer->BeginBatch();
        writer->Write(MakeBatch("a"));

        EXPECT_EQ(reader->ReadMachines().size(), 0U);
    }
    EXPECT_EQ(reader->ReadMachines().size(), 1U);
}

TEST(SqliteStore, KeepsNothingOfABatchThatFails) {
    const std::string path = GetFolder().GetPath("failing.db");
    const auto store = OpenSqliteStore(path);
    store->Migrate();
    TBatch batch = MakeBatch("a");
    batch.inventories = {{{MakeDigest("unknown machine"), EScope::hardware}, 1, {}, "", {}}};
    store->BeginBatch();

    EXPECT_EQ(CatchMessage([&] { store->Write(batch); }),
              path + ": a row belongs to a machine that is missing");

    EXPECT_EQ(store->ReadMachines().size(), 0U);
    store->BeginBatch();
    store->Write(MakeBatch("b"));
    EXPECT_EQ(store->ReadMachines().size(), 1U);
}

TEST(SqliteStore, RemovesVersionsWithoutPresence) {
    const std::string path = GetFolder().GetPath("unused.db");
    const auto store = OpenSqliteStore(path);
    store->Migrate();
    TBatch batch = MakeBatch("a");
    batch.versions = {{MakeDigest("used"), "DiskDrive", "", std::nullopt, {}},
                      {MakeDigest("unused"), "DiskDrive", "", std::nullopt, {}}};
    batch.presences = {{{MakeDigest("a"), EScope::hardware},
                        "DiskDrive",
                        MakeDigest("disk"),
                        always,
                        open,
                        MakeDigest("used"),
                        {}}};
    store->BeginBatch();
    store->Write(batch);

    EXPECT_EQ(store->RemoveUnusedVersions(), 1U);

    EXPECT_EQ(store->FindKnownVersions(std::vector{MakeDigest("used"), MakeDigest("unused")}),
              std::vector{MakeDigest("used")});
    store->BeginBatch();
    store->Write(batch);
    EXPECT_EQ(store->FindKnownVersions(std::vector{MakeDigest("unused")}).size(), 1U);
}

TEST(SqliteStore, RemovesLayoutsOfRemovedInventories) {
    const std::string path = GetFolder().GetPath("layouts.db");
    const auto store = OpenSqliteStore(path);
    store->Migrate();
    TBatch batch = MakeBatch("a");
    batch.inventories = {
        {{MakeDigest("a"), EScope::hardware},
         1000,
         MakeDigest("file"),
         "/srv/a",
         {{MakeDigest("os"), 3, {"NumberOfUsers", "unsignedInt", NINVENTORY::EShape::scalar, {"0"}}}}}};
    store->BeginBatch();
    store->Write(batch);
    const TInventory& inventory = batch.inventories[0];
    TBatch removal;
    removal.removedInventories = {{inventory.place, inventory.time}};
    store->BeginBatch();
    store->Write(removal);

    EXPECT_EQ(store->RemoveUnusedVersions(), 0U);

    TConnection connection(path, TConnection::EAccess::readOnly);
    EXPECT_EQ(connection.GetInteger("SELECT count(*) FROM layout"), 0);
    EXPECT_EQ(connection.GetInteger("SELECT count(*) FROM form"), 0);
    store->BeginBatch();
    store->Write(batch);
    EXPECT_EQ(store->ReadInventories({.withVolatileValues = true}), batch.inventories);
}

TEST(SqliteStore, FindsIdentitiesWhenThereAreMany) {
    const auto store = OpenSqliteStore(GetFolder().GetPath("identities.db"));
    store->Migrate();
    for (const std::string name : {"a", "b"}) {
        TBatch batch = MakeBatch(name);
        batch.versions = {{MakeDigest("version"), "DiskDrive", "", std::nullopt, {}}};
        std::vector<std::string> values;
        values.reserve(250000);
        for (int value = 0; value < 250000; ++value) {
            values.push_back(name + std::to_string(value));
        }
        batch.presences = {{{MakeDigest(name), EScope::hardware},
                            "DiskDrive",
                            MakeDigest("disk"),
                            always,
                            open,
                            MakeDigest("version"),
                            {values, {"both"}}}};
        store->BeginBatch();
        store->Write(batch);

        EXPECT_EQ(store->FindIdentity(name + "249999").size(), 1U);
    }
    EXPECT_EQ(store->FindIdentity("a0").size(), 1U);
    EXPECT_EQ(store->FindIdentity("both").size(), 2U);
    EXPECT_EQ(store->FindIdentity("c0").size(), 0U);
}

class TNoRows final : public ISqlRows {
  public:
    void BeginRows(const std::vector<std::string>& /*columns*/) override {}
    bool AddRow(const std::vector<TSqlValue>& /*values*/) override { return true; }
};

TEST(SqliteStore, RefusesStatementsThatReachBeyondReading) {
    const std::string path = GetFolder().GetPath("query.db");
    const auto store = OpenSqliteStore(path);
    store->Migrate();
    TNoRows rows;

    for (const std::string& text :
         {"ATTACH '" + GetFolder().GetPath("new-file.db") + "' AS other",
          std::string("PRAGMA user_version = 9"), std::string("SELECT load_extension('x')"),
          std::string("VACUUM INTO '/tmp/x'"), std::string("SELECT 1; SELECT 2"),
          std::string(" -- nothing")}) {
        EXPECT_NE(CatchMessage([&] { store->RunSql(text, rows); }), "no error") << text;
    }
    EXPECT_EQ(CatchMessage([&] { store->RunSql("SELECT 1; -- end", rows); }), "no error");
    EXPECT_EQ(CatchMessage(
                  [&] { store->RunSql("SELECT * FROM resources, properties, changes, inventories", rows); }),
              "no error");
    EXPECT_FALSE(fs::exists(GetFolder().GetPath("new-file.db")));
}

INSTANTIATE_TEST_SUITE_P(Sqlite, FleetStore, testing::Values(TStoreMaker{"sqlite", MakeStore}),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace NFLEET
