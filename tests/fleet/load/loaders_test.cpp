// Several loaders, loaders that are killed, full disks and hostile documents.
#include "fleet/load/load.h"
#include "fleet/sqlite/sqlite_store.h"
#include "tests/fleet/load/made_documents.h"
#include "tests/fleet/load/opened_files.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <thread>

namespace NFLEET {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr int machines = 12;
constexpr int days = 6;

// Machines with one disk that is replaced on one of the days.
void WriteFleet(const TLoadFolder& folder) {
    for (int machine = 0; machine < machines; ++machine) {
        for (int day = 1; day <= days; ++day) {
            const std::string serial = "M" + std::to_string(machine);
            const std::string disk = serial + (day > machine % days ? "-new" : "-old");
            folder.Write(serial + "/" + MakeTime(day).substr(0, 10) + "/h.xml",
                         WrapDocument(MakeTime(day), MakeServer(webUuid, serial), MakeDisk(disk)));
        }
    }
}

TLoadOptions MakeOptions() {
    TLoadOptions options;
    options.threads = 2;
    options.batchInventories = 4;
    options.now = firstOfMarch * 2;
    options.timeResolution = std::chrono::milliseconds(20);
    return options;
}

std::string Dump(IFleetStore& store) {
    std::ostringstream text;
    for (const TMachine& machine : store.ReadMachines()) {
        const auto states = store.ReadStates(std::vector{TMachineScope{machine.id, EScope::hardware}});
        text << machine.key << ' ' << machine.first << ' ' << machine.last << ' '
             << states[0].inventories.size() << '\n';
        for (const TPresence& row : states[0].presences) {
            text << ToText(row.resource) << ' ' << row.since << ' ' << row.until << ' ' << ToText(row.version)
                 << '\n';
        }
    }
    return text.str();
}

class FleetLoaders : public testing::Test {
  protected:
    FleetLoaders() { WriteFleet(folder_); }

    std::unique_ptr<IFleetStore> Open(const std::string& name) const {
        auto store = OpenSqliteStore(databases_.GetPath(name));
        store->Migrate();
        return store;
    }

    std::string GetExpected() const {
        const auto store = Open("expected.db");
        TRecordedLoad events;
        LoadInventories({folder_.GetPath()}, MakeOptions(), *store, events);
        return Dump(*store);
    }

    TLoadFolder databases_;
    TLoadFolder folder_;
};

TEST_F(FleetLoaders, GiveTheSameRowsWhenTwoLoadAtOnce) {
    const std::string expected = GetExpected();
    const auto load = [&] {
        const auto store = Open("fleet.db");
        TRecordedLoad events;
        LoadInventories({folder_.GetPath()}, MakeOptions(), *store, events);
    };
    std::thread other(load);
    load();
    other.join();

    EXPECT_EQ(Dump(*Open("fleet.db")), expected);
}

TEST_F(FleetLoaders, GoOnWhereAKilledOneWas) {
    const std::string expected = GetExpected();
    std::this_thread::sleep_for(2 * MakeOptions().timeResolution);
    Open("fleet.db");
    const pid_t loader = ::fork();
    if (loader == 0) {
        const auto store = Open("fleet.db");
        TRecordedLoad events;
        TLoadOptions options = MakeOptions();
        // Waits between files, so that the parent meets it in the middle.
        options.isStopped = [] {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            return false;
        };
        LoadInventories({folder_.GetPath()}, options, *store, events);
        ::_exit(0);
    }
    ASSERT_GT(loader, 0);
    const auto store = Open("fleet.db");
    for (int poll = 0; poll < 3000 && store->ReadInventories({}).size() < 10; ++poll) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_EQ(::kill(loader, SIGKILL), 0);
    ASSERT_EQ(::waitpid(loader, nullptr, 0), loader);
    std::vector<std::string> stored;
    for (const TInventory& inventory : store->ReadInventories({})) {
        stored.push_back(inventory.source);
    }
    EXPECT_GE(stored.size(), 10U);
    const TOpenedFiles opened(folder_.GetPath());

    TRecordedLoad events;
    const TLoadCount count = LoadInventories({folder_.GetPath()}, MakeOptions(), *store, events);

    EXPECT_EQ(count.unchanged, stored.size());
    EXPECT_EQ(count.known, stored.size());
    const auto files = opened.Take();
    EXPECT_EQ(files.size(), std::size_t{machines} * days - stored.size());
    for (const std::string& file : stored) {
        EXPECT_THAT(files, Not(Contains(file)));
    }
    EXPECT_EQ(count.known + count.inventories, std::uint64_t{machines} * days);
    EXPECT_EQ(Dump(*store), expected);
}

TEST_F(FleetLoaders, KeepWholeBatchesWhenTheDiskIsFull) {
    const std::string expected = GetExpected();
    constexpr std::int64_t fewPages = 60;
    std::string message;
    {
        Open("full.db");
        const auto full = OpenSqliteStore(databases_.GetPath("full.db"), fewPages);
        TLoadFolder large;
        for (int machine = 0; machine < 30; ++machine) {
            std::string disks;
            for (int disk = 0; disk < 60; ++disk) {
                disks += MakeDisk("L" + std::to_string(machine) + "-" + std::to_string(disk),
                                  "model " + std::to_string(disk * machine));
            }
            large.Write(std::to_string(machine) + "/h.xml",
                        WrapDocument(MakeTime(1), MakeServer(webUuid, "L" + std::to_string(machine)), disks));
        }
        TRecordedLoad events;
        try {
            LoadInventories({large.GetPath()}, MakeOptions(), *full, events);
        } catch (const TStoreError& error) {
            message = error.what();
        }
        EXPECT_EQ(full->ReadInventories({}).size() % 4, 0U);
        for (const TInventory& inventory : full->ReadInventories({})) {
            EXPECT_EQ(full->ReadPresences(inventory.place, open - 1).size(), 61U);
        }
    }
    EXPECT_EQ(message, databases_.GetPath("full.db") + ": database or disk is full");
}

TEST_F(FleetLoaders, StoreAnUnchangedInventoryInLessThan200Bytes) {
    constexpr int unchanged = 400;
    std::ifstream file(NOXINFO_MACHINES "/server-two-sockets/expected.xml", std::ios::binary);
    const std::string document{std::istreambuf_iterator<char>(file), {}};
    const std::string time = "2024-03-01T12:00:00";
    const std::size_t at = document.find(time);
    ASSERT_NE(at, std::string::npos);
    TLoadFolder folder;
    const auto load = [&](int number) {
        std::string later = document;
        later.replace(at, time.size(),
                      "2024-03-" + std::to_string(10 + number / 24 % 20) + "T" +
                          (number % 24 < 10 ? "0" : "") + std::to_string(number % 24) + ":00:00");
        folder.Write("db-1/" + std::to_string(number) + "/hardwareinventory.xml", later);
    };
    const auto measure = [&] {
        const auto store = Open("unchanged.db");
        TRecordedLoad events;
        LoadInventories({folder.GetPath()}, MakeOptions(), *store, events);
        return store->ReadInventories({}).size();
    };
    load(0);
    EXPECT_EQ(measure(), 1U);
    const auto before = std::filesystem::file_size(databases_.GetPath("unchanged.db"));
    for (int number = 1; number <= unchanged; ++number) {
        load(number);
    }
    const std::size_t stored = measure();
    const auto after = std::filesystem::file_size(databases_.GetPath("unchanged.db"));

    EXPECT_GT(stored, 100U);
    EXPECT_LT((after - before) / (stored - 1), 200U);
}

TEST_F(FleetLoaders, StopOnRequest) {
    TLoadOptions options = MakeOptions();
    options.isStopped = [] { return true; };
    const auto store = Open("stopped.db");
    TRecordedLoad events;

    const TLoadCount count = LoadInventories({folder_.GetPath()}, options, *store, events);

    EXPECT_LT(count.files, std::uint64_t{machines} * days);
}

TEST_F(FleetLoaders, StoreThousandsOfHostileNames) {
    constexpr unsigned names = 5000;
    const std::string_view hostile[] = {
        "'; DROP TABLE machine; --", "../../etc/passwd", "&lt;script&gt;", "%s%n", "\\x00", "{}"};
    std::string devices;
    for (unsigned i = 0; i < names; ++i) {
        const std::string name = std::string(hostile[i % 6]) + std::to_string(i);
        std::string plain = name;
        for (const std::string_view part : {"&lt;", "&gt;"}) {
            if (const std::size_t at = plain.find(part); at != std::string::npos) {
                plain.erase(at, part.size());
            }
        }
        devices += MakeResource(i % 2 == 0 ? MakeId(i) : plain, plain,
                                MakeProperty(plain, name, plain) + MakeProperty("SerialNumber", name));
    }
    TLoadFolder folder;
    folder.Write("h.xml", WrapDocument(MakeTime(1), MakeServer(webUuid, "WEB1"), devices));
    const auto store = Open("hostile.db");
    TRecordedLoad events;

    LoadInventories({folder.GetPath()}, MakeOptions(), *store, events);

    EXPECT_TRUE(events.setAside.empty()) << events.setAside.front();
    EXPECT_EQ(store->FindIdentity("'; DROP TABLE machine; --0").size(), 1U);
    EXPECT_EQ(store->FindIdentity("<script>2").size(), 1U);
    EXPECT_EQ(store->ReadMachines().size(), 1U);
    EXPECT_EQ(store->ReadStates(std::vector{TMachineScope{store->ReadMachines()[0].id, EScope::hardware}})[0]
                  .presences.size(),
              names + 1U);
}

}  // namespace
}  // namespace NFLEET
