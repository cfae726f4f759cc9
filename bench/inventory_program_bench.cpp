// Measures the program on inventories: its memory and time for documents of different sizes, and the time
// that showing a machine needs in comparison with collecting from it.
#include "bench/inventory_workload.h"
#include "bench/measured_process.h"
#include "bench/ratio.h"
#include "writer/nox_xml_writer.h"

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t megabyte = 1'000'000;

// A temporary folder, removed on destruction.
class TFolder {
  public:
    TFolder() : path_((fs::temp_directory_path() / "noxinfo-bench-XXXXXX").string()) {
        if (::mkdtemp(path_.data()) == nullptr) {
            throw std::runtime_error("cannot make a temporary directory");
        }
    }
    ~TFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    TFolder(const TFolder&) = delete;
    TFolder& operator=(const TFolder&) = delete;

    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

// A small document, whose lists are repeated for large ones, so that this process stays small.
class TRepeatedDocument {
  public:
    TRepeatedDocument() {
        std::ostringstream rendered;
        TNOXXMLWriterImpl(rendered).WriteNamespace(MakeInventory(UnitsForDocument(megabyte)));
        const std::string text = std::move(rendered).str();
        const std::size_t begin = text.find("<ResourceList ");
        const std::size_t end = text.find("</ResourceCollection>");
        head_ = text.substr(0, begin);
        lists_ = text.substr(begin, end - begin);
        tail_ = text.substr(end);
        for (std::size_t at = lists_.find(idStart); at != std::string::npos; at = lists_.find(idStart, at)) {
            at += idStart.size();
            ids_.push_back(at);
        }
    }

    std::size_t CountResources() const { return ids_.size(); }
    std::size_t CountRepetitions(std::size_t bytes) const { return bytes / lists_.size() + 1; }

    // Each repetition has identifiers of its own. In one of a hundred, models have the name `model`.
    void Write(const std::string& path, std::size_t repetitions, const std::string& model = "KT-") const {
        std::ofstream file(path, std::ios::binary);
        file << head_;
        for (std::size_t i = 0; i < repetitions; ++i) {
            file << MakeLists(i, i % 100 == 0 ? model : "KT-");
        }
        file << tail_;
        if (!file.flush()) {
            throw std::runtime_error("cannot write " + path);
        }
    }

  private:
    std::string MakeLists(std::size_t number, const std::string& model) const {
        constexpr std::string_view ownModel = ">KT-";
        constexpr std::size_t digits = 8;
        std::string own = std::to_string(number);
        own.insert(0, digits - own.size(), '0');
        std::string lists = lists_;
        for (const std::size_t id : ids_) {
            lists.replace(id, digits, own);
        }
        for (std::size_t at = lists.find(ownModel); at != std::string::npos; at = lists.find(ownModel, at)) {
            lists.replace(++at, model.size(), model);
        }
        return lists;
    }

    static constexpr std::string_view idStart = "resourceId=\"";
    std::string head_, lists_, tail_;
    std::vector<std::size_t> ids_;  // the places of the identifiers in the lists
};

void ParseWithLibxml2(const std::string& path) {
    xmlSAXHandler handlers{};
    handlers.initialized = XML_SAX2_MAGIC;
    if (xmlSAXUserParseFile(&handlers, nullptr, path.c_str()) != 0) {
        throw std::runtime_error("cannot parse " + path);
    }
}

void ShowDocumentOfSize(benchmark::State& state) {
    const auto bytes = static_cast<std::size_t>(state.range(0)) * megabyte;
    const TFolder folder;
    const std::string document = folder / "document.xml";
    const TRepeatedDocument repeated;
    repeated.Write(document, repeated.CountRepetitions(bytes));
    TBestTime parseTime;
    TBestTime showTime;
    double peakMiB = 0;
    for ([[maybe_unused]] auto iteration : state) {
        const TProcessCost cost = RunMeasured({NOXINFO_PROGRAM, "show", "--format", "ndjson", document});
        showTime.Add(cost.cpuSeconds);
        peakMiB = std::max(peakMiB, cost.peakMiB);
        parseTime.Add(CpuSeconds([&] { ParseWithLibxml2(document); }));
    }
    state.counters["document_MB"] = static_cast<double>(fs::file_size(document)) / megabyte;
    state.counters["peak_MiB"] = peakMiB;
    state.counters["show/parse"] = showTime.GetSeconds() / parseTime.GetSeconds();
}
BENCHMARK(ShowDocumentOfSize)->Arg(1)->Arg(50)->Arg(1000)->Iterations(3)->Unit(benchmark::kMillisecond);

void DiffDocumentsOfSize(benchmark::State& state) {
    const auto resources = static_cast<std::size_t>(state.range(0));
    const TFolder folder;
    const TRepeatedDocument repeated;
    const std::size_t repetitions = resources / repeated.CountResources() + 1;
    repeated.Write(folder / "before.xml", repetitions);
    repeated.Write(folder / "after.xml", repetitions, "KX-");
    TBestTime readTime;
    TBestTime diffTime;
    double peakMiB = 0;
    for ([[maybe_unused]] auto iteration : state) {
        // No resource is of this type, so that the documents are only read.
        readTime.Add(RunMeasured({NOXINFO_PROGRAM, "show", "--format", "ndjson", "--type", "None",
                                  folder / "before.xml", folder / "after.xml"})
                         .cpuSeconds);
        const TProcessCost cost =
            RunMeasured({NOXINFO_PROGRAM, "diff", folder / "before.xml", folder / "after.xml"});
        diffTime.Add(cost.cpuSeconds);
        peakMiB = std::max(peakMiB, cost.peakMiB);
    }
    const auto all = static_cast<double>(repetitions * repeated.CountResources());
    constexpr double microseconds = 1e6;
    state.counters["resources"] = all;
    state.counters["document_MB"] = static_cast<double>(fs::file_size(folder / "before.xml")) / megabyte;
    state.counters["diff_us_per_resource"] = diffTime.GetSeconds() * microseconds / all;
    state.counters["diff/read"] = diffTime.GetSeconds() / readTime.GetSeconds();
    state.counters["peak_MiB"] = peakMiB;
}
BENCHMARK(DiffDocumentsOfSize)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

void RedactDocumentOfSize(benchmark::State& state) {
    const auto bytes = static_cast<std::size_t>(state.range(0)) * megabyte;
    const TFolder folder;
    const std::string document = folder / "document.xml";
    const TRepeatedDocument repeated;
    repeated.Write(document, repeated.CountRepetitions(bytes));
    TBestTime copyTime;
    TBestTime redactTime;
    double peakMiB = 0;
    for ([[maybe_unused]] auto iteration : state) {
        copyTime.Add(RunMeasured({NOXINFO_PROGRAM, "show", "--format", "xml", "--output", folder / "copy.xml",
                                  document})
                         .cpuSeconds);
        const TProcessCost cost = RunMeasured(
            {NOXINFO_PROGRAM, "redact", "--key-file", folder / "key", "--output", folder / "out", document});
        redactTime.Add(cost.cpuSeconds);
        peakMiB = std::max(peakMiB, cost.peakMiB);
        fs::remove_all(folder / "out");
    }
    state.counters["document_MB"] = static_cast<double>(fs::file_size(document)) / megabyte;
    state.counters["peak_MiB"] = peakMiB;
    state.counters["redact/copy"] = redactTime.GetSeconds() / copyTime.GetSeconds();
}
BENCHMARK(RedactDocumentOfSize)->Arg(1)->Arg(50)->Iterations(3)->Unit(benchmark::kMillisecond);

void ShowThisMachineAgainstCollect(benchmark::State& state) {
    const TFolder folder;
    TBestTime showTime;
    TBestTime collectTime;
    for ([[maybe_unused]] auto iteration : state) {
        showTime.Add(RunMeasured({NOXINFO_PROGRAM, "show"}).cpuSeconds);
        collectTime.Add(
            RunMeasured({NOXINFO_PROGRAM, "collect", "--reachability", "no", "--directory", folder / "."})
                .cpuSeconds);
    }
    state.counters["show_ms"] = showTime.GetSeconds() * 1e3;
    state.counters["collect_ms"] = collectTime.GetSeconds() * 1e3;
    state.counters["show/collect"] = showTime.GetSeconds() / collectTime.GetSeconds();
}
BENCHMARK(ShowThisMachineAgainstCollect)->Iterations(20)->Unit(benchmark::kMillisecond);

}  // namespace
