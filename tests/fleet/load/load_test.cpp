// Loading files, directories and archives into a store.
#include "fleet/load/load.h"

#include "fleet/sqlite/sqlite_store.h"
#include "tests/fleet/load/made_documents.h"
#include "tests/fleet/load/opened_files.h"

#include <archive.h>
#include <archive_entry.h>
#include <gmock/gmock.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <sstream>
#include <thread>

namespace NFLEET {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class FleetLoad : public testing::Test {
  protected:
    FleetLoad() : store_(OpenSqliteStore(databases_.GetPath("fleet.db"))) { store_->Migrate(); }

    TLoadCount Load(const std::vector<std::string>& paths) {
        TLoadOptions options;
        options.threads = 2;
        options.batchInventories = 3;
        options.now = firstOfMarch + TSeconds{100} * 86400;
        return LoadInventories(paths, options, *store_, events_);
    }
    TLoadCount Load() { return Load({folder_.GetPath()}); }

    // "KEY: SERIAL since-until, ..." of every machine, with days of March.
    std::vector<std::string> ShowDisks() {
        std::vector<std::string> shown;
        for (const TMachine& machine : store_->ReadMachines()) {
            const auto states = store_->ReadStates(std::vector{TMachineScope{machine.id, EScope::hardware}});
            std::string line = machine.key + ":";
            for (const std::string& row : ListDisks(states[0].presences)) {
                line += " " + row;
            }
            shown.push_back(line);
        }
        return shown;
    }

    static std::vector<std::string> ListDisks(const std::vector<TPresence>& rows) {
        std::vector<std::string> disks;
        for (const TPresence& row : rows) {
            if (row.type == "DiskDrive") {
                disks.push_back(row.identity[0][0] + " " + ShowDay(row.since) + "-" + ShowDay(row.until));
            }
        }
        std::ranges::sort(disks);
        return disks;
    }

    static std::string ShowDay(TSeconds time) {
        return time == always ? "always"
               : time == open ? "open"
                              : std::to_string((time - firstOfMarch) / 86400 + 1);
    }

    // Everything that is stored, in an order of its own.
    std::string Dump() {
        std::ostringstream text;
        for (const TMachine& machine : store_->ReadMachines()) {
            text << machine.key << ' ' << machine.facts.model << ' ' << machine.first << ' ' << machine.last
                 << '\n';
            for (const EScope scope : scopes) {
                const auto states = store_->ReadStates(std::vector{TMachineScope{machine.id, scope}});
                for (const TInventory& inventory : states[0].inventories) {
                    text << inventory.time << ' ' << ToText(inventory.digest) << '\n';
                }
                for (const TPresence& row : states[0].presences) {
                    text << ToText(row.resource) << ' ' << row.since << ' ' << row.until << ' '
                         << ToText(row.version) << '\n';
                }
            }
        }
        return text.str();
    }

    TLoadFolder databases_;
    TLoadFolder folder_;
    std::unique_ptr<IFleetStore> store_;
    TRecordedLoad events_;
};

std::string Compress(const std::string& text) {
    z_stream stream{};
    constexpr int gzip = MAX_WBITS + 16;
    EXPECT_EQ(deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, gzip, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string compressed(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(compressed.data());
    stream.avail_out = static_cast<uInt>(compressed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    compressed.resize(stream.total_out);
    deflateEnd(&stream);
    return compressed;
}

struct TMember {
    std::string name;
    std::string bytes;
};

void WriteTar(const std::string& path, bool isXz, const std::vector<TMember>& members) {
    archive* writer = archive_write_new();
    archive_write_set_format_pax_restricted(writer);
    isXz ? archive_write_add_filter_xz(writer) : archive_write_add_filter_gzip(writer);
    ASSERT_EQ(archive_write_open_filename(writer, path.c_str()), ARCHIVE_OK);
    for (const TMember& member : members) {
        archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname(entry, member.name.c_str());
        archive_entry_set_size(entry, static_cast<la_int64_t>(member.bytes.size()));
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_perm(entry, 0644);
        archive_write_header(writer, entry);
        archive_write_data(writer, member.bytes.data(), member.bytes.size());
        archive_entry_free(entry);
    }
    archive_write_free(writer);
}

TEST_F(FleetLoad, StoresTheResourcesOfADocument) {
    const std::string path = folder_.Write("hardware.xml", MakeWeb(1, MakeDisk("A") + MakeDisk("B")));

    const TLoadCount count = Load({path});

    EXPECT_EQ(count.inventories, 1U);
    EXPECT_THAT(ShowDisks(), ElementsAre(std::string(webKey) + ": A always-open B always-open"));
    const auto machines = store_->ReadMachines();
    EXPECT_EQ(machines[0].rule, EMachineRule::uuid);
    EXPECT_EQ(machines[0].facts, (TMachineFacts{"", "Example Servers", "7915-X3G", "WEB1", webUuid}));
    EXPECT_EQ(machines[0].first, firstOfMarch);
    const auto inventories = store_->ReadInventories({.withVolatileValues = true});
    ASSERT_EQ(inventories.size(), 1U);
    EXPECT_EQ(inventories[0].source, path);
    EXPECT_EQ(inventories[0].volatileValues.size(), 2U);
    EXPECT_EQ(inventories[0].volatileValues[0].property.name, "MountCount");
}

TEST_F(FleetLoad, ReadsCompressedDocuments) {
    folder_.Write("hardware.xml.gz", Compress(MakeWeb(1, MakeDisk("A"))));

    EXPECT_EQ(Load().inventories, 1U);
    EXPECT_THAT(events_.setAside, IsEmpty());
}

TEST_F(FleetLoad, RecordsChangesBetweenInventories) {
    folder_.Write("web/1/h.xml", MakeWeb(1, MakeDisk("A") + MakeDisk("B")));
    folder_.Write("web/2/h.xml", MakeWeb(2, MakeDisk("A") + MakeDisk("B")));
    folder_.Write("web/3/h.xml", MakeWeb(3, MakeDisk("A") + MakeDisk("C")));
    folder_.Write("db/1/h.xml", MakeDb(1, MakeDisk("D")));
    folder_.Write("db/4/h.xml", MakeDb(4, MakeDisk("D") + MakeDisk("B")));

    EXPECT_EQ(Load().inventories, 5U);

    EXPECT_THAT(ShowDisks(), UnorderedElementsAre(std::string(webKey) + ": A always-open B always-3 C 3-open",
                                                  std::string(dbKey) + ": B 4-open D always-open"));
}

TEST_F(FleetLoad, ChangesNothingWhenItIsRepeated) {
    folder_.Write("web/1/h.xml", MakeWeb(1, MakeDisk("A")));
    folder_.Write("web/2/h.xml", MakeWeb(2, MakeDisk("B")));
    Load();
    const std::string before = Dump();

    const TLoadCount count = Load();

    EXPECT_EQ(count.inventories, 0U);
    EXPECT_EQ(count.known, 2U);
    EXPECT_EQ(Dump(), before);
}

// Loads files that are older than the resolution of their times.
class FleetLoadOfOldFiles : public FleetLoad {
  protected:
    TLoadCount LoadLater(bool readsAgain = false) {
        constexpr std::chrono::milliseconds resolution(20);  // two ticks of any kernel
        std::this_thread::sleep_for(2 * resolution);
        TLoadOptions options;
        options.threads = 2;
        options.batchInventories = 3;
        options.now = firstOfMarch * 2;
        options.readsAgain = readsAgain;
        options.timeResolution = resolution;
        return LoadInventories({folder_.GetPath()}, options, *store_, events_);
    }
};

TEST_F(FleetLoadOfOldFiles, LeavesOutFilesThatDidNotChange) {
    folder_.Write("web/1/h.xml", MakeWeb(1, MakeDisk("A")));
    folder_.Write("web/1/s.xml", MakeSystemInformation(1, "WEB1", "web-1"));
    WriteTar(folder_.GetPath("fleet.tar.gz"), false,
             {{"db/1/h.xml", MakeDb(1, MakeDisk("D"))}, {"db/2/h.xml", MakeDb(2, MakeDisk("D"))}});
    EXPECT_EQ(LoadLater().inventories, 4U);
    const std::string before = Dump();
    const TOpenedFiles opened(folder_.GetPath());

    const TLoadCount count = LoadLater();

    EXPECT_EQ(count.files, 3U);
    EXPECT_EQ(count.unchanged, 3U);
    EXPECT_EQ(count.bytes, 0U);
    EXPECT_EQ(count.inventories, 0U);
    EXPECT_EQ(count.known, 4U);
    EXPECT_EQ(events_.last.files, 3U);
    EXPECT_THAT(opened.Take(), IsEmpty());
    EXPECT_EQ(Dump(), before);
}

TEST_F(FleetLoadOfOldFiles, ReadsUnchangedFilesOnRequest) {
    folder_.Write("web/1/h.xml", MakeWeb(1, MakeDisk("A")));
    LoadLater();

    const TLoadCount count = LoadLater(/*readsAgain=*/true);

    EXPECT_EQ(count.unchanged, 0U);
    EXPECT_EQ(count.known, 1U);
    EXPECT_GT(count.bytes, 0U);
    EXPECT_EQ(LoadLater().unchanged, 1U);
}

TEST_F(FleetLoadOfOldFiles, ReadsAFileAgainWhoseTimeChanged) {
    const std::string path = folder_.Write("h.xml", MakeWeb(1, MakeDisk("A")));
    LoadLater();
    std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) - std::chrono::hours(1));

    const TLoadCount count = LoadLater();

    EXPECT_EQ(count.unchanged, 0U);
    EXPECT_EQ(count.known, 1U);
    EXPECT_EQ(LoadLater().unchanged, 1U);
}

TEST_F(FleetLoadOfOldFiles, ReadsOtherContentOfTheSameSizeAndTime) {
    const std::string path = folder_.Write("h.xml", MakeWeb(1, MakeDisk("A")));
    const auto time = std::filesystem::last_write_time(path);
    LoadLater();
    folder_.Write("h.xml", MakeWeb(2, MakeDisk("B")));
    std::filesystem::last_write_time(path, time);

    const TLoadCount count = LoadLater();

    EXPECT_EQ(count.unchanged, 0U);
    EXPECT_EQ(count.inventories, 1U);
}

TEST_F(FleetLoadOfOldFiles, ReadsTheWholeFolderOfAFileThatWasAdded) {
    folder_.Write("web/1/h.xml", MakeWeb(1, MakeDisk("A")));
    folder_.Write("db/1/h.xml", MakeDb(1, MakeDisk("D")));
    LoadLater();
    folder_.Write("web/1/s.xml", MakeSystemInformation(1, "WEB1", "web-1"));

    const TLoadCount count = LoadLater();

    EXPECT_EQ(count.files, 3U);
    EXPECT_EQ(count.unchanged, 1U);
    EXPECT_EQ(count.inventories, 1U);
    EXPECT_EQ(count.known, 2U);
}

TEST_F(FleetLoadOfOldFiles, ReadsAFolderThatWasRenamed) {
    folder_.Write("web/1/h.xml", MakeWeb(1, MakeDisk("A")));
    LoadLater();
    std::filesystem::rename(folder_.GetPath("web"), folder_.GetPath("www"));

    EXPECT_EQ(LoadLater().unchanged, 0U);
}

TEST_F(FleetLoadOfOldFiles, ReadsFoldersAndArchivesAgainInWhichSomethingWasSetAside) {
    folder_.Write("a/h.xml", "<");
    folder_.Write("a/other.xml", MakeDb(1, MakeDisk("D")));
    folder_.Write("b/h.xml", MakeWeb(1, MakeDisk("A")));
    WriteTar(folder_.GetPath("fleet.tar.gz"), false,
             {{"web/2/h.xml", MakeWeb(2, MakeDisk("A"))}, {"web/3/h.xml", "<"}});
    LoadLater();
    events_.setAside.clear();

    const TLoadCount count = LoadLater();

    EXPECT_EQ(count.unchanged, 1U);
    EXPECT_EQ(count.known, 3U);
    EXPECT_THAT(events_.setAside, UnorderedElementsAre(HasSubstr(folder_.GetPath("a/h.xml:")),
                                                       HasSubstr("fleet.tar.gz/web/3/h.xml:")));
}

TEST_F(FleetLoadOfOldFiles, DoesNotBringBackInventoriesThatWerePruned) {
    folder_.Write("1/h.xml", MakeWeb(1, MakeDisk("A")));
    folder_.Write("2/h.xml", MakeWeb(2, MakeDisk("A")));
    LoadLater();
    EXPECT_EQ(PruneInventories({}, *store_), 1U);
    folder_.Write("3/h.xml", MakeWeb(3, MakeDisk("A")));

    EXPECT_EQ(LoadLater().inventories, 1U);
    EXPECT_EQ(store_->ReadInventories({}).size(), 2U);
    EXPECT_EQ(LoadLater(/*readsAgain=*/true).inventories, 1U);
    EXPECT_EQ(store_->ReadInventories({}).size(), 3U);
}

TEST_F(FleetLoadOfOldFiles, LeavesOutTheFilesOfMergedMachines) {
    folder_.Write("web/1/h.xml", MakeWeb(1, MakeDisk("A")));
    folder_.Write("db/2/h.xml", MakeDb(2, MakeDisk("D")));
    LoadLater();
    MergeMachines(webKey, dbKey, *store_);
    const std::string before = Dump();

    EXPECT_EQ(LoadLater().unchanged, 2U);
    EXPECT_EQ(LoadLater(/*readsAgain=*/true).known, 2U);
    EXPECT_EQ(Dump(), before);
}

TEST_F(FleetLoadOfOldFiles, LeavesOutWhatItFollowed) {
    folder_.Write("1/h.xml", MakeWeb(1, MakeDisk("A")));
    int polls = 0;
    TLoadOptions options;
    options.watches = true;
    options.now = firstOfMarch * 2;
    options.timeResolution = std::chrono::milliseconds(20);
    options.isStopped = [&] {
        if (++polls == 3) {
            folder_.Write("2/h.xml", MakeWeb(2, MakeDisk("B")));
        }
        return events_.last.inventories >= 2 || polls > 1000;
    };
    LoadInventories({folder_.GetPath()}, options, *store_, events_);

    EXPECT_EQ(LoadLater().unchanged, 2U);
}

TEST_F(FleetLoad, ReadsFilesAgainThatChangedWithinTheResolutionOfTheirTimes) {
    folder_.Write("h.xml", MakeWeb(1, MakeDisk("A")));
    TLoadOptions options;
    options.now = firstOfMarch * 2;
    options.timeResolution = std::chrono::hours(1);
    LoadInventories({folder_.GetPath()}, options, *store_, events_);

    const TLoadCount count = LoadInventories({folder_.GetPath()}, options, *store_, events_);

    EXPECT_EQ(count.unchanged, 0U);
    EXPECT_EQ(count.known, 1U);
}

TEST_F(FleetLoad, FollowsLinks) {
    TLoadFolder elsewhere;
    const std::string disks = elsewhere.Write("db-1/h.xml", MakeDb(1, MakeDisk("D")));
    const std::string file = elsewhere.Write("one.xml", MakeWeb(1, MakeDisk("A")));
    std::filesystem::create_directory_symlink(elsewhere.GetPath("db-1"), folder_.GetPath("db-1"));
    std::filesystem::create_directory(folder_.GetPath("web"));
    std::filesystem::create_symlink(file, folder_.GetPath("web/h.xml"));
    std::filesystem::create_symlink("nowhere", folder_.GetPath("web/latest.xml"));

    EXPECT_EQ(Load().inventories, 2U);
    EXPECT_THAT(events_.setAside, ElementsAre(folder_.GetPath("web/latest.xml") +
                                              ": is a symbolic link that cannot be followed: No such file "
                                              "or directory"));
}

TEST_F(FleetLoad, ReportsAPathWithoutInventories) {
    std::filesystem::create_directory(folder_.GetPath("empty"));
    const std::string document = folder_.Write("full/h.xml", MakeWeb(1, MakeDisk("A")));
    const std::string broken = folder_.Write("broken/h.xml", "<");
    WriteTar(folder_.GetPath("empty.tar.gz"), false, {});
    const std::string empty = folder_.GetPath("empty");
    const std::string archive = folder_.GetPath("empty.tar.gz");

    const TLoadCount count = Load({empty, document, broken, archive});

    EXPECT_EQ(count.emptyPaths, 2U);
    EXPECT_THAT(events_.warnings,
                ElementsAre(empty + ": contains no inventories", archive + ": contains no inventories"));
}

TEST_F(FleetLoad, GivesTheSameRowsForAnyOrder) {
    std::vector<std::string> paths;
    for (int day = 1; day <= 7; ++day) {
        paths.push_back(
            folder_.Write(std::to_string(day) + "/h.xml",
                          MakeWeb(day, MakeDisk(day % 3 == 0 ? "A" : "B", day < 4 ? "SM600" : "SM900"))));
    }
    Load(paths);
    const std::string expected = Dump();
    for (const auto& order :
         {std::vector{7, 6, 5, 4, 3, 2, 1}, {4, 1, 7, 2, 6, 3, 5}, {2, 2, 5, 1, 3, 7, 6, 4, 1}}) {
        const auto other = OpenSqliteStore(databases_.GetPath("other" + std::to_string(order[0]) + ".db"));
        other->Migrate();
        for (const int day : order) {
            TRecordedLoad events;
            LoadInventories({paths[static_cast<std::size_t>(day) - 1]}, {.now = firstOfMarch * 2}, *other,
                            events);
        }
        store_ = OpenSqliteStore(databases_.GetPath("other" + std::to_string(order[0]) + ".db"));
        EXPECT_EQ(Dump(), expected);
    }
}

TEST_F(FleetLoad, KeepsTheFirstSourceOfADocumentInTwoPlaces) {
    const std::string text = MakeWeb(1, MakeDisk("A"));
    const std::string first = folder_.Write("a/h.xml", text);
    const std::string second = folder_.Write("b/h.xml", text);
    Load({first});

    EXPECT_EQ(Load({second}).known, 1U);

    const auto inventories = store_->ReadInventories({});
    ASSERT_EQ(inventories.size(), 1U);
    EXPECT_EQ(inventories[0].source, first);
}

TEST_F(FleetLoad, JoinsTheDocumentsOfAFolder) {
    folder_.Write("hardwareinventory.xml", MakeWeb(1, MakeDisk("A")));
    folder_.Write("systeminformation.xml", MakeSystemInformation(1, "WEB1", "web-1"));

    EXPECT_EQ(Load().inventories, 2U);

    const auto machines = store_->ReadMachines();
    ASSERT_EQ(machines.size(), 1U);
    EXPECT_EQ(machines[0].key, webKey);
    EXPECT_EQ(machines[0].facts.name, "web-1");
}

TEST_F(FleetLoad, KeepsDocumentsOfDifferentMachinesInOneFolderApart) {
    folder_.Write("a.xml", MakeWeb(1, MakeDisk("A")));
    folder_.Write("b.xml", MakeSystemInformation(1, "OTHER", "other"));

    Load();

    EXPECT_EQ(store_->ReadMachines().size(), 2U);
}

TEST_F(FleetLoad, NamesAMachineWithoutIdentityAfterItsFolder) {
    folder_.Write("db-1/2024-03-01/h.xml", WrapDocument(MakeTime(1), MakeServer("", ""), MakeDisk("A")));
    folder_.Write("db-1/2024-03-02/h.xml", WrapDocument(MakeTime(2), MakeServer("", ""), MakeDisk("A")));

    Load();

    EXPECT_THAT(ShowDisks(), ElementsAre("path:db-1: A always-open"));
}

TEST_F(FleetLoad, ReadsArchives) {
    WriteTar(folder_.GetPath("fleet.tar.gz"), false,
             {{"web/2024-03-01/h.xml.gz", Compress(MakeWeb(1, MakeDisk("A")))},
              {"web/2024-03-01/readme.txt", "hello"},
              {"web/2024-03-02/h.xml", MakeWeb(2, MakeDisk("B"))}});
    WriteTar(folder_.GetPath("fleet.tar.xz"), true, {{"h.xml", MakeDb(1, MakeDisk("D"))}});

    EXPECT_EQ(Load().inventories, 3U);

    EXPECT_THAT(ShowDisks(), UnorderedElementsAre(std::string(webKey) + ": A always-2 B 2-open",
                                                  std::string(dbKey) + ": D always-open"));
    EXPECT_THAT(events_.setAside, ElementsAre(folder_.GetPath("fleet.tar.gz/web/2024-03-01/readme.txt") +
                                              ": is not an inventory document"));
    EXPECT_EQ(
        store_->ReadInventories({.until = firstOfMarch + 1})[0].source.substr(0, folder_.GetPath().size()),
        folder_.GetPath());
}

TEST_F(FleetLoad, SetsDamagedArchivesAside) {
    folder_.Write("fleet.tar.gz", "this is not an archive");
    folder_.Write("web/h.xml", MakeWeb(1, MakeDisk("A")));

    EXPECT_EQ(Load().inventories, 1U);
    EXPECT_EQ(events_.setAside.size(), 1U);
}

TEST_F(FleetLoad, SetsBrokenDocumentsAsideAndGoesOn) {
    const std::string whole = MakeWeb(1, MakeDisk("A"));
    folder_.Write("1/cut.xml", whole.substr(0, whole.size() / 2));
    folder_.Write("2/cut.xml.gz", Compress(whole).substr(0, 100));
    folder_.Write("3/letter.txt", "Dear Sir or Madam");
    folder_.Write("4/empty.xml", "");
    folder_.Write("5/time.xml", WrapDocument("yesterday", MakeServer(webUuid, "WEB1"), ""));
    folder_.Write("6/no-time.xml", WrapDocument("", MakeServer(webUuid, "WEB1"), ""));
    folder_.Write("7/good.xml", MakeDb(1, MakeDisk("D")));

    const TLoadCount count = Load();

    EXPECT_EQ(count.inventories, 1U);
    EXPECT_EQ(count.setAside, 6U);
    EXPECT_THAT(events_.setAside,
                UnorderedElementsAre(HasSubstr("1/cut.xml:"),
                                     folder_.GetPath("2/cut.xml.gz") + ": the compressed data is truncated",
                                     folder_.GetPath("3/letter.txt") + ": is not an inventory document",
                                     folder_.GetPath("4/empty.xml") + ": is not an inventory document",
                                     folder_.GetPath("5/time.xml") + ": has the malformed time \"yesterday\"",
                                     folder_.GetPath("6/no-time.xml") + ": has no time"));
}

TEST_F(FleetLoad, LeavesHiddenFilesOut) {
    folder_.Write(".noxinfo-unfinished/h.xml", "<");
    folder_.Write(".h.xml", "<");

    EXPECT_EQ(Load().files, 0U);
}

TEST_F(FleetLoad, RefusesAMissingPath) {
    EXPECT_THROW(Load({folder_.GetPath("missing")}), std::runtime_error);
}

TEST_F(FleetLoad, SeparatesAndReportsMachinesWithOneUuid) {
    folder_.Write("a/h.xml", WrapDocument(MakeTime(1), MakeServer(webUuid, "S1"), MakeDisk("A")));
    folder_.Write("b/h.xml", WrapDocument(MakeTime(1), MakeServer(webUuid, "S2"), MakeDisk("B")));

    Load();

    const std::string uuid = std::string("uuid:") + webUuid;
    EXPECT_THAT(ShowDisks(),
                UnorderedElementsAre(uuid + " serial:S1: A always-open", uuid + " serial:S2: B always-open"));
    ASSERT_EQ(events_.warnings.size(), 1U);
    EXPECT_THAT(events_.warnings[0], HasSubstr("machines with one UUID: uuid:"));
    events_.warnings.clear();
    Load();
    EXPECT_THAT(events_.warnings, IsEmpty());
}

TEST_F(FleetLoad, ReportsTimesInTheFuture) {
    const std::string path = folder_.Write(
        "h.xml", WrapDocument("2099-01-01T00:00:00Z", MakeServer(webUuid, "WEB1"), MakeDisk("A")));

    EXPECT_EQ(Load().inventories, 1U);
    EXPECT_THAT(events_.warnings, ElementsAre(path + ": the time of the inventory is in the future"));
}

TEST_F(FleetLoad, CountsFiles) {
    for (int day = 1; day <= 9; ++day) {
        folder_.Write(std::to_string(day) + "/h.xml", MakeWeb(day, MakeDisk("A")));
    }

    const TLoadCount count = Load();

    EXPECT_EQ(count.files, 9U);
    EXPECT_EQ(count.inventories, 9U);
    EXPECT_EQ(events_.last.allFiles, 9U);
    EXPECT_GT(count.bytes, 9U * 500U);
}

TEST_F(FleetLoad, ContinuesTheHistoryOfAMergedMachine) {
    folder_.Write("web/1/h.xml", MakeWeb(1, MakeDisk("A")));
    folder_.Write("web/2/h.xml", MakeWeb(2, MakeDisk("A")));
    folder_.Write("new/3/h.xml", MakeDb(3, MakeDisk("B")));
    Load();

    MergeMachines(webKey, dbKey, *store_);
    EXPECT_THAT(ShowDisks(), ElementsAre(std::string(dbKey) + ": A always-3 B 3-open"));
    EXPECT_EQ(store_->ReadInventories({.withVolatileValues = true})[0].volatileValues.size(), 1U);

    MergeMachines(webKey, dbKey, *store_);
    EXPECT_EQ(Load().known, 3U);
    folder_.Write("web/4/h.xml", MakeWeb(4, MakeDisk("C")));
    EXPECT_EQ(Load().inventories, 1U);

    EXPECT_THAT(ShowDisks(), ElementsAre(std::string(dbKey) + ": A always-3 B 3-4 C 4-open"));
    const auto machines = store_->ReadMachines();
    EXPECT_EQ(machines[0].first, firstOfMarch);
}

TEST_F(FleetLoad, RefusesToMergeUnknownMachines) {
    folder_.Write("web/1/h.xml", MakeWeb(1, MakeDisk("A")));
    Load();

    EXPECT_THROW(MergeMachines("uuid:none", webKey, *store_), TStoreError);
    EXPECT_THROW(MergeMachines(webKey, "uuid:none", *store_), TStoreError);
    MergeMachines(webKey, webKey, *store_);
    EXPECT_EQ(store_->ReadMachines().size(), 1U);
}

TEST_F(FleetLoad, PrunesInventoriesAndKeepsTheNewest) {
    for (int day = 1; day <= 6; ++day) {
        folder_.Write(std::to_string(day) + "/h.xml", MakeWeb(day, MakeDisk(day < 4 ? "A" : "B")));
    }
    Load();

    EXPECT_EQ(PruneInventories({.newest = 2}, *store_), 4U);

    EXPECT_THAT(ShowDisks(), ElementsAre(std::string(webKey) + ": B always-open"));
    EXPECT_EQ(store_->ReadMachines()[0].first, firstOfMarch + TSeconds{4} * 86400);
    EXPECT_THAT(store_->FindIdentity("A"), IsEmpty());
    EXPECT_EQ(PruneInventories({}, *store_), 1U);
    EXPECT_EQ(store_->ReadInventories({}).size(), 1U);
}

TEST_F(FleetLoad, PrunesToOneInventoryOfEachPeriod) {
    for (const int day : {1, 2, 8, 9, 10}) {
        folder_.Write(std::to_string(day) + "/h.xml", MakeWeb(day, MakeDisk("A" + std::to_string(day))));
    }
    Load();

    EXPECT_EQ(PruneInventories({.days = 2, .weeks = 3}, *store_), 2U);

    EXPECT_THAT(ShowDisks(), ElementsAre(std::string(webKey) + ": A10 10-open A2 always-9 A9 9-10"));
}

TEST_F(FleetLoad, FollowsADirectory) {
    folder_.Write("1/h.xml", MakeWeb(1, MakeDisk("A")));
    int polls = 0;
    TLoadOptions options;
    options.watches = true;
    options.now = firstOfMarch * 2;
    options.timeResolution = std::chrono::nanoseconds(0);
    options.isStopped = [&] {
        if (++polls == 3) {
            folder_.Write("2/h.xml", MakeWeb(2, MakeDisk("B")));
        }
        return events_.last.inventories >= 2 || polls > 1000;
    };

    const TLoadCount count = LoadInventories({folder_.GetPath()}, options, *store_, events_);

    EXPECT_EQ(count.inventories, 2U);
    EXPECT_EQ(count.files, 2U) << "files that did not change are not read again";
    EXPECT_EQ(count.known, 0U);
}

}  // namespace
}  // namespace NFLEET
