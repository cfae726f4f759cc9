// Compares loading the inventories of a fleet with decompressing and parsing the same documents with libxml2,
// whose events go to functions that do nothing, on as many threads: the first inventory of each machine, then
// two more. At the end, all are loaded a second time: as any files, which are not opened, and as with
// --again. NOXINFO_BENCH_MACHINES is the number of machines. The documents are made in the folder
// NOXINFO_BENCH_DOCUMENTS, or taken from it if it exists; without it, they are removed at the end.
//
// With NOXINFO_BENCH_CLICKHOUSE, such as clickhouse://127.0.0.1:8123/bench, the documents are loaded into
// that database as well, which is made and removed. The processor time is that of this process; a server on
// the same processors adds to the wall time.
#include "bench/inventory_workload.h"
#include "bench/made_fleet.h"
#include "fleet/clickhouse/clickhouse_store.h"
#include "fleet/clickhouse/client.h"
#include "fleet/load/load.h"
#include "fleet/load/source_files.h"
#include "fleet/sqlite/sqlite_store.h"
#include "writer/nox_xml_writer.h"

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <zlib.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace NFLEET {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t documentBytes = 247'000;
constexpr unsigned days = 3;
constexpr unsigned threads = 2;

unsigned GetMachines() {
    const char* const text = std::getenv("NOXINFO_BENCH_MACHINES");
    return text == nullptr ? 1000 : static_cast<unsigned>(std::stoul(text));
}

void WriteCompressed(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    gzFile file = gzopen(path.c_str(), "wb");
    if (file == nullptr || gzwrite(file, text.data(), static_cast<unsigned>(text.size())) == 0 ||
        gzclose(file) != Z_OK) {
        std::abort();
    }
}

TMadeFleet MakeFleet() {
    std::ostringstream out;
    TNOXXMLWriterImpl(out).WriteNamespace(MakeInventory(UnitsForDocument(documentBytes)));
    return TMadeFleet(std::move(out).str());
}

// A folder for databases, and for documents that are not kept; removed at the end.
class TScratchFolder {
  public:
    TScratchFolder() {
        std::string path = (fs::temp_directory_path() / "noxinfo-bench-XXXXXX").string();
        if (::mkdtemp(path.data()) == nullptr) {
            std::abort();
        }
        path_ = path;
    }
    ~TScratchFolder() {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    TScratchFolder(const TScratchFolder&) = delete;
    TScratchFolder& operator=(const TScratchFolder&) = delete;

    const fs::path& GetPath() const { return path_; }

  private:
    fs::path path_;
};

// The documents of all days on disk.
class TFleetOnDisk {
  public:
    TFleetOnDisk() {
        const char* const kept = std::getenv("NOXINFO_BENCH_DOCUMENTS");
        root_ = kept == nullptr ? scratch_.GetPath() : fs::path(kept);
        const TMadeFleet fleet = MakeFleet();
        for (unsigned day = 0; day < days; ++day) {
            for (unsigned machine = 0; machine < GetMachines(); ++machine) {
                const std::string text = fleet.MakeDocument(machine, day);
                const fs::path file =
                    root_ / std::to_string(day) / std::to_string(machine) / "hardwareinventory.xml.gz";
                if (!fs::exists(file)) {
                    WriteCompressed(file, text);
                }
                files_[day].push_back(file.string());
                bytes_ += text.size();
                compressedBytes_ += fs::file_size(file);
            }
        }
    }
    ~TFleetOnDisk() = default;
    TFleetOnDisk(const TFleetOnDisk&) = delete;
    TFleetOnDisk& operator=(const TFleetOnDisk&) = delete;

    std::string GetFolder(unsigned day) const { return (root_ / std::to_string(day)).string(); }
    std::vector<std::string> GetFolders() const {
        std::vector<std::string> folders;
        for (unsigned day = 0; day < days; ++day) {
            folders.push_back(GetFolder(day));
        }
        return folders;
    }
    std::string GetDatabase() const { return (scratch_.GetPath() / "fleet.db").string(); }
    // The fleet of all benchmarks.
    static const TFleetOnDisk& Get() {
        static const TFleetOnDisk fleet;
        return fleet;
    }
    const std::vector<std::string>& GetFiles(unsigned day) const { return files_[day]; }
    double GetCompressedBytes() const { return static_cast<double>(compressedBytes_); }
    double GetBytes() const { return static_cast<double>(bytes_); }

  private:
    const TScratchFolder scratch_;
    fs::path root_;
    std::vector<std::string> files_[days];
    std::uintmax_t bytes_ = 0;
    std::uintmax_t compressedBytes_ = 0;
};

struct TTime {
    double wall = 0;
    double processor = 0;

    TTime& operator+=(const TTime& other) {
        wall += other.wall;
        processor += other.processor;
        return *this;
    }
};

template <typename TWork>
TTime Measure(TWork work) {
    const auto processor = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const auto start = std::chrono::steady_clock::now();
    const double startProcessor = processor();
    work();
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
            processor() - startProcessor};
}

// One thread's decompression and parse; keeps its memory between documents.
class TBareParser {
  public:
    TBareParser() {
        constexpr int gzip = MAX_WBITS + 16;
        if (inflateInit2(&stream_, gzip) != Z_OK) {
            std::abort();
        }
        handlers_.initialized = XML_SAX2_MAGIC;
        handlers_.startElementNs = [](void*, const xmlChar*, const xmlChar*, const xmlChar*, int,
                                      const xmlChar**, int, int, const xmlChar**) {};
        handlers_.endElementNs = [](void*, const xmlChar*, const xmlChar*, const xmlChar*) {};
        handlers_.characters = [](void*, const xmlChar*, int) {};
        handlers_.ignorableWhitespace = handlers_.characters;
    }
    ~TBareParser() { inflateEnd(&stream_); }
    TBareParser(const TBareParser&) = delete;
    TBareParser& operator=(const TBareParser&) = delete;

    void Parse(const std::string& path) {
        TSourceFile file = ReadSourceFile(path);
        inflateReset(&stream_);
        text_.resize(4 * documentBytes);
        stream_.next_in = reinterpret_cast<Bytef*>(file.bytes.data());
        stream_.avail_in = static_cast<uInt>(file.bytes.size());
        stream_.next_out = reinterpret_cast<Bytef*>(text_.data());
        stream_.avail_out = static_cast<uInt>(text_.size());
        if (inflate(&stream_, Z_FINISH) != Z_STREAM_END ||
            xmlSAXUserParseMemory(&handlers_, nullptr, text_.data(), static_cast<int>(stream_.total_out)) !=
                0) {
            std::abort();
        }
    }

  private:
    z_stream stream_{};
    xmlSAXHandler handlers_{};
    std::string text_;
};

void ParseAll(const std::vector<std::string>& files) {
    std::atomic<std::size_t> next = 0;
    const auto run = [&] {
        TBareParser parser;
        for (std::size_t i = next++; i < files.size(); i = next++) {
            parser.Parse(files[i]);
        }
    };
    std::vector<std::thread> running;
    for (unsigned i = 0; i < threads; ++i) {
        running.emplace_back(run);
    }
    for (std::thread& thread : running) {
        thread.join();
    }
}

struct TSilentLoad final : ILoadEvents {
    void Progress(const TLoadCount& /*count*/) override {}
    void SetAside(std::string_view /*path*/, std::string_view reason) override {
        std::cerr << reason << std::endl;
        std::abort();
    }
    void Warn(std::string_view /*message*/) override {}
};

TLoadCount LoadFolders(const std::vector<std::string>& folders, bool readsAgain, IFleetStore& store) {
    TLoadOptions options;
    options.threads = threads;
    options.now = open - 1000000;
    options.readsAgain = readsAgain;
    options.timeResolution = std::chrono::nanoseconds(0);  // the files may have been made just now
    TSilentLoad events;
    return LoadInventories(folders, options, store, events);
}

void Load(const std::string& folder, IFleetStore& store) {
    const TLoadCount count = LoadFolders({folder}, /*readsAgain=*/false, store);
    if (count.inventories != GetMachines()) {
        std::cerr << "stored " << count.inventories << " of " << GetMachines() << ", known " << count.known
                  << '\n';
        std::abort();
    }
}

// Loads what is loaded already.
void LoadKnown(const std::vector<std::string>& folders, bool readsAgain, IFleetStore& store) {
    const TLoadCount count = LoadFolders(folders, readsAgain, store);
    const std::uint64_t all = std::uint64_t{GetMachines()} * days;
    if (count.known != all || count.unchanged != (readsAgain ? 0 : all)) {
        std::cerr << count.known << " known, " << count.unchanged << " unchanged of " << all << '\n';
        std::abort();
    }
}

// The greatest resident memory of the process in MiB, and how to begin anew.
double GetPeakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "VmHWM:") {
            double kibibytes = 0;
            status >> kibibytes;
            return kibibytes / 1024;
        }
    }
    return 0;
}

void ResetPeakMemory() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

// A store that is measured.
class IMeasuredStore {
  public:
    virtual ~IMeasuredStore() = default;

    virtual std::unique_ptr<IFleetStore> Open() = 0;
    // Returns the bytes on disk of the store, which is not open.
    virtual double GetBytes() = 0;
};

class TMeasuredSqlite : public IMeasuredStore {
  public:
    std::unique_ptr<IFleetStore> Open() override { return OpenSqliteStore(path_); }
    double GetBytes() override { return static_cast<double>(fs::file_size(path_)); }

  private:
    std::string path_ = TFleetOnDisk::Get().GetDatabase();
};

class TMeasuredClickHouse : public IMeasuredStore {
  public:
    explicit TMeasuredClickHouse(std::string url)
        : url_(std::move(url)), client_(ParseClickHouseAddress(url_), OpenHttp(ReadClickHouseCredentials())) {
        if (Open()->GetSchemaVersion() != 0) {
            throw std::runtime_error(url_ + " has tables already");
        }
    }
    ~TMeasuredClickHouse() override {
        client_.Execute("DROP DATABASE " + QuoteName(client_.GetAddress().database));
    }
    TMeasuredClickHouse(const TMeasuredClickHouse&) = delete;
    TMeasuredClickHouse& operator=(const TMeasuredClickHouse&) = delete;

    std::unique_ptr<IFleetStore> Open() override { return OpenClickHouseStore(url_); }
    double GetBytes() override {
        const std::string ofDatabase = " WHERE database = " + QuoteText(client_.GetAddress().database);
        std::istringstream tables(
            Ask("SELECT name FROM system.tables" + ofDatabase + " AND name LIKE '%_rows'"));
        for (std::string table; tables >> table;) {
            client_.Execute("OPTIMIZE TABLE " + table + " FINAL");
        }
        return std::stod(Ask("SELECT sum(bytes_on_disk) FROM system.parts" + ofDatabase + " AND active"));
    }

  private:
    std::string Ask(const std::string& query) { return client_.SelectText(query, "TabSeparated", {}); }

    std::string url_;
    TClickHouseClient client_;
};

void LoadAgainstBareParse(benchmark::State& state, IMeasuredStore& measured) {
    const TFleetOnDisk& fleet = TFleetOnDisk::Get();
    xmlInitParser();
    ResetPeakMemory();
    for (auto iteration : state) {
        auto store = measured.Open();
        store->Migrate();
        TTime bare;
        TTime first;
        TTime bareFollowing;
        TTime following;
        bare += Measure([&] { ParseAll(fleet.GetFiles(0)); });
        first += Measure([&] { Load(fleet.GetFolder(0), *store); });
        store.reset();  // moves everything into the database file
        const double firstBytes = measured.GetBytes();
        store = measured.Open();
        for (unsigned day = 1; day < days; ++day) {
            bareFollowing += Measure([&] { ParseAll(fleet.GetFiles(day)); });
            following += Measure([&] { Load(fleet.GetFolder(day), *store); });
        }
        store.reset();
        const double bytes = measured.GetBytes();
        store = measured.Open();
        const TTime unchanged = Measure([&] { LoadKnown(fleet.GetFolders(), /*readsAgain=*/false, *store); });
        const TTime again = Measure([&] { LoadKnown(fleet.GetFolders(), /*readsAgain=*/true, *store); });
        store.reset();
        const double machines = GetMachines();
        state.SetIterationTime(first.wall + following.wall);
        state.counters["document_KB"] = fleet.GetBytes() / machines / days / 1e3;
        state.counters["gzip_KB"] = fleet.GetCompressedBytes() / machines / days / 1e3;
        state.counters["parse_per_s"] = machines / bare.wall;
        state.counters["first_per_s"] = machines / first.wall;
        state.counters["following_per_s"] = machines * (days - 1) / following.wall;
        state.counters["first/parse"] = first.wall / bare.wall;
        state.counters["first/parse_cpu"] = first.processor / bare.processor;
        state.counters["following/parse"] = following.wall / bareFollowing.wall;
        state.counters["following/parse_cpu"] = following.processor / bareFollowing.processor;
        state.counters["all/parse"] = (first.wall + following.wall) / (bare.wall + bareFollowing.wall);
        state.counters["unchanged/load"] = unchanged.wall / (first.wall + following.wall);
        state.counters["again/load"] = again.wall / (first.wall + following.wall);
        state.counters["bytes/gzip"] = bytes / fleet.GetCompressedBytes();
        state.counters["following_bytes"] = (bytes - firstBytes) / machines / (days - 1);
        state.counters["peak_MiB"] = GetPeakMemory();
    }
}

void LoadIntoSqlite(benchmark::State& state) {
    TMeasuredSqlite store;
    LoadAgainstBareParse(state, store);
}

void LoadIntoClickHouse(benchmark::State& state) {
    const char* const url = std::getenv("NOXINFO_BENCH_CLICKHOUSE");
    if (url == nullptr) {
        state.SkipWithError("NOXINFO_BENCH_CLICKHOUSE is not set");
        return;
    }
    TMeasuredClickHouse store(url);
    LoadAgainstBareParse(state, store);
}

BENCHMARK(LoadIntoSqlite)->UseManualTime()->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(LoadIntoClickHouse)->UseManualTime()->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
}  // namespace NFLEET
