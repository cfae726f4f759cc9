// SQLite and ClickHouse give the same answers about the same documents.
#include "clickhouse_server.h"
#include "fleet/clickhouse/clickhouse_store.h"
#include "fleet/load/load.h"
#include "fleet/sqlite/sqlite_store.h"
#include "program_run.h"
#include "temporary_directory.h"
#include "tests/fleet/load/made_documents.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <thread>

namespace NFLEET {
namespace {

constexpr int days = 8;
constexpr TSeconds secondsOfDay = 86'400;

// The disks of a machine on a day: some of ten, with a model that changes now and then.
std::string MakeDisks(std::mt19937& random) {
    std::string disks;
    for (int i = 0; i < 10; ++i) {
        if (random() % 4 != 0) {
            disks += MakeDisk("S" + std::to_string(i) + "&amp;'\"", random() % 8 == 0 ? "OTHER\\n" : "SM600");
        }
    }
    return disks;
}

// Documents of two machines, between which disks move.
void MakeDocuments(const TLoadFolder& folder) {
    std::mt19937 random(1);
    for (int day = 1; day <= days; ++day) {
        const std::string name = "/" + std::to_string(day) + "/hardwareinventory.xml";
        folder.Write("web" + name, MakeWeb(day, MakeDisks(random)));
        folder.Write("db" + name, MakeDb(day, MakeDisks(random)));
        folder.Write("web/" + std::to_string(day) + "/systeminformation.xml",
                     MakeSystemInformation(day, "WEB1", "host" + std::to_string(day / 4)));
    }
}

// Documents of ten machines of one model, of which one has another disk.
void MakeMachinesOfAModel(const TLoadFolder& folder) {
    for (int i = 0; i < 10; ++i) {
        const std::string number = std::to_string(i);
        const std::string uuid = "4C4C4544-0042-3510-8052-B4C04F4A313" + number;
        folder.Write("more/" + number + "/hardwareinventory.xml",
                     WrapDocument(MakeTime(days), MakeServer(uuid, "M" + number),
                                  MakeDisk("more" + number, i == 7 ? "RARE" : "SM600")));
    }
}

// Files that are older are not read again.
constexpr std::chrono::milliseconds resolution(20);

class TSameAnswers : public testing::Test {
  protected:
    TSameAnswers()
        : sqlite_(OpenSqliteStore(database_.GetPath("fleet.db"))),
          clickHouse_(OpenClickHouseStore(MakeDatabaseUrl())) {
        MakeDocuments(folder_);
        sqlite_->Migrate();
        clickHouse_->Migrate();
    }

    TLoadCount Load(IFleetStore& store, const std::vector<std::string>& names) {
        std::vector<std::string> paths;
        paths.reserve(names.size());
        for (const std::string& name : names) {
            paths.push_back(folder_.GetPath(name));
        }
        TLoadOptions options;
        options.threads = 2;
        options.batchInventories = 5;
        options.now = firstOfMarch + 100 * secondsOfDay;
        options.timeResolution = resolution;
        return LoadInventories(paths, options, store, events_);
    }

    void ExpectSameAnswers() {
        EXPECT_EQ(clickHouse_->ReadMachines(), sqlite_->ReadMachines());
        EXPECT_EQ(clickHouse_->ReadMergedAliases(std::nullopt), sqlite_->ReadMergedAliases(std::nullopt));
        for (const TMachine& machine : sqlite_->ReadMachines()) {
            EXPECT_EQ(clickHouse_->ReadMergedAliases(machine.id), sqlite_->ReadMergedAliases(machine.id));
            EXPECT_EQ(clickHouse_->FindNamedMachines(machine.key), std::vector{machine});
            EXPECT_EQ(sqlite_->FindNamedMachines(machine.key), std::vector{machine});
            EXPECT_EQ(clickHouse_->ReadAliasesOf(machine.id), sqlite_->ReadAliasesOf(machine.id));
        }
        ExpectSameInventories();
        ExpectSameChanges();
        ExpectSameStates();
        ExpectSameVersions();
    }

    TLoadFolder folder_;
    TLoadFolder database_;
    std::unique_ptr<IFleetStore> sqlite_;
    std::unique_ptr<IFleetStore> clickHouse_;
    TRecordedLoad events_;

  private:
    void ExpectSameInventories() {
        TInventoryQuery query;
        query.withVolatileValues = true;
        EXPECT_FALSE(sqlite_->ReadInventories(query).empty());
        EXPECT_EQ(clickHouse_->ReadInventories(query), sqlite_->ReadInventories(query));
        query.newestOnly = true;
        query.until = firstOfMarch + 3 * secondsOfDay;
        EXPECT_EQ(clickHouse_->ReadInventories(query), sqlite_->ReadInventories(query));
    }

    void ExpectSameChanges() {
        EXPECT_FALSE(sqlite_->ReadChanges({}).empty());
        for (int day = 0; day <= days; ++day) {
            const TChangeQuery query{{}, firstOfMarch + day * secondsOfDay, open};
            EXPECT_EQ(clickHouse_->ReadChanges(query), sqlite_->ReadChanges(query)) << day;
            const TChangeQuery ofDisks{{}, firstOfMarch + day * secondsOfDay, open, {"DiskDrive"}};
            EXPECT_EQ(clickHouse_->ReadChanges(ofDisks), sqlite_->ReadChanges(ofDisks)) << day;
        }
    }

    void ExpectSameStates() {
        std::set<std::string> values{"S1&'\"", "WEB1", "no such value"};
        for (const TMachine& machine : sqlite_->ReadMachines()) {
            const std::vector ids{machine.id};
            EXPECT_EQ(clickHouse_->ReadHeads(ids), sqlite_->ReadHeads(ids));
            for (const EScope scope : scopes) {
                const std::vector places{TMachineScope{machine.id, scope}};
                const auto state = sqlite_->ReadStates(places).at(0);
                EXPECT_EQ(clickHouse_->ReadStates(places).at(0).presences, state.presences);
                EXPECT_EQ(clickHouse_->ReadStates(places).at(0).inventories, state.inventories);
                EXPECT_EQ(clickHouse_->ReadPresences(places[0], open - 1),
                          sqlite_->ReadPresences(places[0], open - 1));
            }
        }
        EXPECT_FALSE(sqlite_->FindIdentity("S1&'\"").empty());
        for (const std::string& value : values) {
            EXPECT_EQ(clickHouse_->FindIdentity(value), sqlite_->FindIdentity(value)) << value;
        }
    }

    void ExpectSameVersions() {
        const auto counts = sqlite_->CountVersions({});
        EXPECT_FALSE(counts.empty());
        EXPECT_EQ(clickHouse_->CountVersions({}), counts);
        const TCountQuery disks{"7915-X3G", {"DiskDrive"}};
        EXPECT_FALSE(sqlite_->CountVersions(disks).empty());
        EXPECT_EQ(clickHouse_->CountVersions(disks), sqlite_->CountVersions(disks));
        std::vector<TDigest> versions;
        versions.reserve(counts.size());
        for (const TVersionCount& count : counts) {
            versions.push_back(count.version);
        }
        std::ranges::sort(versions);
        EXPECT_EQ(clickHouse_->ReadVersions(versions), sqlite_->ReadVersions(versions));
        for (const TDigest& version : versions) {
            const std::vector one{version};
            EXPECT_FALSE(sqlite_->FindMachinesWith(one).empty());
            EXPECT_EQ(clickHouse_->FindMachinesWith(one), sqlite_->FindMachinesWith(one));
        }
        EXPECT_EQ(clickHouse_->FindPresences(versions, std::nullopt),
                  sqlite_->FindPresences(versions, std::nullopt));
    }
};

TEST_F(TSameAnswers, AfterALoad) {
    Load(*sqlite_, {""});
    Load(*clickHouse_, {""});
    ExpectSameAnswers();
}

TEST_F(TSameAnswers, AfterALoadOfFilesThatDidNotChange) {
    std::this_thread::sleep_for(2 * resolution);
    for (IFleetStore* const store : {sqlite_.get(), clickHouse_.get()}) {
        const std::uint64_t inventories = Load(*store, {"web", "db/1"}).inventories;

        const TLoadCount count = Load(*store, {""});

        EXPECT_EQ(count.unchanged, inventories);
        EXPECT_EQ(count.known, inventories);
        EXPECT_EQ(count.files, std::uint64_t{3} * days);
        EXPECT_EQ(count.inventories, std::uint64_t{3} * days - inventories);
    }
    ExpectSameAnswers();
}

TEST_F(TSameAnswers, AfterLoadsInAnotherOrder) {
    Load(*sqlite_, {""});
    for (const char* name : {"web/5", "db/8", "web/2", "db/1", "web/8", "db/4", "web", "db", ""}) {
        Load(*clickHouse_, {name});
    }
    EXPECT_EQ(clickHouse_->ReadMachines(), sqlite_->ReadMachines());
    EXPECT_EQ(clickHouse_->ReadChanges({}), sqlite_->ReadChanges({}));
    EXPECT_EQ(clickHouse_->CountVersions({}), sqlite_->CountVersions({}));
}

TEST_F(TSameAnswers, AfterTwoLoadersAtOnce) {
    Load(*sqlite_, {""});
    const std::string url = MakeDatabaseUrl();
    clickHouse_ = OpenClickHouseStore(url);
    clickHouse_->Migrate();
    const auto load = [this, &url] {
        const auto store = OpenClickHouseStore(url);
        TRecordedLoad events;
        TLoadOptions options;
        options.batchInventories = 5;
        options.now = firstOfMarch + 100 * secondsOfDay;
        (void)LoadInventories({folder_.GetPath()}, options, *store, events);
    };
    std::thread other(load);
    load();
    other.join();
    ExpectSameAnswers();
}

TEST_F(TSameAnswers, AfterPruningAndMerging) {
    for (IFleetStore* const store : {sqlite_.get(), clickHouse_.get()}) {
        Load(*store, {""});
        TKeepOptions keep;
        keep.newest = 3;
        EXPECT_GT(PruneInventories(keep, *store), 0U);
        MergeMachines(dbKey, webKey, *store);
    }
    ExpectSameAnswers();
}

// The outputs of a command in every format.
std::string RunFleet(std::vector<std::string> arguments, const std::string& store) {
    arguments.insert(arguments.end(), {"--store", store});
    const auto result = NVORHOST::RunProgram(NOXINFO_FLEET, {arguments, "/", {}});
    return std::to_string(result.status) + "\n" + result.standardOutput + result.standardError;
}

// The files below a directory, by their paths in it.
std::map<std::string, std::string> ReadTree(const std::string& directory) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
        if (entry.is_regular_file()) {
            files[std::filesystem::relative(entry.path(), directory).string()] =
                NVORHOST::ReadFile(entry.path().string());
        }
    }
    return files;
}

TEST(SameOutput, OfEveryCommandInEveryFormat) {
    const TLoadFolder folder;
    const TLoadFolder databases;
    MakeDocuments(folder);
    MakeMachinesOfAModel(folder);
    const std::string sqlite = "sqlite:" + databases.GetPath("fleet.db");
    const std::string clickHouse = MakeDatabaseUrl();
    const std::string loaded = RunFleet({"load", folder.GetPath()}, sqlite);
    EXPECT_EQ(loaded.substr(0, 23), "0\nloaded 34 inventories") << loaded;
    EXPECT_EQ(RunFleet({"load", folder.GetPath()}, clickHouse), loaded);
    EXPECT_EQ(RunFleet({"load", folder.GetPath()}, clickHouse), RunFleet({"load", folder.GetPath()}, sqlite));
    const std::vector<std::vector<std::string>> commands{
        {"machines"},
        {"machines", "--where", "DiskDrive.Name=SM600"},
        {"machines", "--where", "DiskDrive.Name~^(SM600|RARE)$", "--where", "DiskDrive.DeviceID~^S"},
        {"machines", "--where", "DiskDrive.DeviceID=S1&'\""},
        {"machines", "--where", "DiskDrive.Colour=blue"},
        {"show", webKey},
        {"show", webKey, "--at", "2024-03-03"},
        {"history", webKey},
        {"changes", "--since", "2024-03-02"},
        {"where", "S1&'\""},
        {"where", "no such part"},
        {"outliers"},
        {"outliers", "--model", "7915-X3G"},
        {"outliers", "--group-by", "vendor"},
        {"outliers", "--group-by", "Server.MachineType"},
        {"outliers", "--group-by", "DiskDrive.Name"},
        {"stale", "--older-than", "7d"},
        {"summary"},
        {"sql", "SELECT count(*) AS n FROM inventories"},
    };
    for (const auto& command : commands) {
        for (const char* format : {"text", "json", "csv"}) {
            auto arguments = command;
            arguments.insert(arguments.end(), {"--format", format});
            const std::string answer = RunFleet(arguments, sqlite);
            EXPECT_EQ(RunFleet(arguments, clickHouse), answer) << command[0] << " " << format;
            EXPECT_EQ(answer[0], '0') << command[0] << " " << format << "\n" << answer;
        }
    }
    EXPECT_NE(RunFleet({"outliers"}, clickHouse).find("RARE"), std::string::npos);
    for (const char* format : {"ndjson", "csv"}) {
        EXPECT_EQ(RunFleet({"export", "--format", format}, clickHouse),
                  RunFleet({"export", "--format", format}, sqlite));
    }
    const std::string left = databases.GetPath("left");
    const std::string right = databases.GetPath("right");
    EXPECT_EQ(RunFleet({"report", "--output", left}, sqlite), "0\nwrote " + left + "/index.html\n");
    EXPECT_EQ(RunFleet({"report", "--output", right}, clickHouse), "0\nwrote " + right + "/index.html\n");
    EXPECT_GT(ReadTree(left).size(), 20U);
    EXPECT_EQ(ReadTree(right), ReadTree(left));
}

}  // namespace
}  // namespace NFLEET
