// Measures whole requests of the built plug-in with the embedded host: compared with only compressing the
// finished document, for growing numbers of instances, and in memory.
#include "bench/inventory_workload.h"
#include "bench/ratio.h"
#include "vorhost/services/host_settings.h"
#include "vorhost/services/plugin_library.h"
#include "writer/catalogue/resource_catalogue.h"
#include "writer/nox_xml_writer.h"

#include <benchmark/benchmark.h>
#include <boost/make_shared.hpp>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using NKELVOR20::TCIMValue;
using NVORHOST::TMemoryNamespace;
using NVORHOST::TPropertyDeclaration;
using TNamespacePtr = boost::shared_ptr<TMemoryNamespace>;

constexpr std::size_t documentSize = 50'000'000;

/// A temporary working directory, because requests write into the current one.
class TWorkingDirectory {
  public:
    TWorkingDirectory() : home_(std::filesystem::current_path()) {
        std::string name = (std::filesystem::temp_directory_path() / "request-bench-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            std::abort();
        }
        path_ = name;
        std::filesystem::current_path(path_);
    }
    ~TWorkingDirectory() {
        std::filesystem::current_path(home_);
        std::filesystem::remove_all(path_);
    }
    TWorkingDirectory(const TWorkingDirectory&) = delete;
    TWorkingDirectory& operator=(const TWorkingDirectory&) = delete;

  private:
    std::filesystem::path home_;
    std::filesystem::path path_;
};

/// The loaded plug-in with a host that has no network and no identity.
class TRequester {
  public:
    TRequester() {
        ::unsetenv("ZETKELID");
        NVORHOST::THostSettings settings;
        settings.reachability = NVORHOST::EReachability::no;
        NVORHOST::SetHostSettings(settings);
    }

    void Request(const TNamespacePtr& collected) {
        const auto resultClass =
            boost::make_shared<NVORHOST::TMemoryClass>("KELSG_CADAT", std::vector<TPropertyDeclaration>());
        std::vector<boost::shared_ptr<NKELVOR20::ICIMClass>> resultClasses = {resultClass};
        plugin_.GetData(collected, resultClasses);
        if (resultClass->GetInstances().size() != 1) {
            std::abort();
        }
    }

  private:
    TWorkingDirectory directory_;
    NVORHOST::TPluginLibrary plugin_{NOXINFO_PLUGIN_FILE};
};

/// Adds a machine type, without which a request ends early.
TNamespacePtr WithMachineType(TNamespacePtr collected) {
    const auto machine = collected->AddClass("KELSG_ComputerSystem")->NewInstance();
    machine->Set("ProductName", TCIMValue("Kessel K4 -[884021X]-"));
    machine->CommitInstance({});
    return collected;
}

std::string Render(const TNamespacePtr& collected) {
    std::ostringstream text;
    TNOXXMLWriterImpl(text).WriteNamespace(collected);
    return std::move(text).str();
}

/// Compresses with one gzwrite at the default level.
void Compress(const std::string& text) {
    gzFile file = gzopen("finished.xml.gz", "wb");
    gzwrite(file, text.data(), static_cast<unsigned int>(text.size()));
    gzclose(file);
}

void RequestAgainstGzip(benchmark::State& state) {
    const TNamespacePtr collected = WithMachineType(MakeInventory(UnitsForDocument(documentSize)));
    const std::string text = Render(collected);
    TRequester requester;
    TBestTime request;
    TBestTime compression;
    for (auto iteration : state) {
        const double seconds = CpuSeconds([&] { requester.Request(collected); });
        request.Add(seconds);
        compression.Add(CpuSeconds([&] { Compress(text); }));
        state.SetIterationTime(seconds);
    }
    state.counters["document_MB"] = static_cast<double>(text.size()) / 1e6;
    state.counters["file_MB"] =
        static_cast<double>(std::filesystem::file_size("hardwareinventory.xml.gz")) / 1e6;
    state.counters["request_ms"] = request.GetSeconds() * 1e3;
    state.counters["gzip_ms"] = compression.GetSeconds() * 1e3;
    state.counters["request/gzip"] = request.GetSeconds() / compression.GetSeconds();
}

/// Returns devices of one class with little text each, so that a million of them fit into memory.
TNamespacePtr MakeDevices(std::size_t count) {
    constexpr std::string_view className = "KELSG_PCIDevice";
    std::vector<TPropertyDeclaration> declarations;
    for (const TPropertyRow& row : FindResourceClass(className)->properties) {
        declarations.push_back({std::string(row.sourceName), TCIMValue::TCIMType::eString});
    }
    auto devices = boost::make_shared<TMemoryNamespace>();
    const auto added = devices->AddClass(std::string(className), declarations);
    for (std::size_t number = 0; number < count; ++number) {
        const auto device = added->NewInstance();
        device->Set("DeviceID", TCIMValue(std::to_string(number * 2654435761U)));
        device->CommitInstance({});
    }
    return devices;
}

void RequestOverInstances(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const TNamespacePtr collected = WithMachineType(MakeDevices(count));
    TRequester requester;
    TBestTime request;
    for (auto iteration : state) {
        const double seconds = CpuSeconds([&] { requester.Request(collected); });
        request.Add(seconds);
        state.SetIterationTime(seconds);
    }
    state.counters["us_per_instance"] = request.GetSeconds() / static_cast<double>(count) * 1e6;
    state.SetComplexityN(state.range(0));
}

// Memory is measured in a child process, because memory left by an earlier measurement would hide part of
// the peak.
double StatusBytes(std::string_view key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(key)) {
            return std::strtod(line.c_str() + key.size(), nullptr) * 1024;
        }
    }
    std::abort();
}

struct TMemoryUse {
    double documentBytes;
    double peakBytes;  ///< above the memory of the namespace and the loaded plug-in
};

TMemoryUse MeasureMemoryUse() {
    const TNamespacePtr collected = WithMachineType(MakeInventory(UnitsForDocument(documentSize)));
    const auto documentBytes = static_cast<double>(Render(collected).size());
    TRequester requester;
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";  // resets the peak
    const double before = StatusBytes("VmRSS:");
    requester.Request(collected);
    return {documentBytes, StatusBytes("VmHWM:") - before};
}

void PeakMemoryOfRequest(benchmark::State& state) {
    for (auto iteration : state) {
        int ends[2];
        if (::pipe(ends) != 0) {
            std::abort();
        }
        const pid_t child = ::fork();
        if (child == 0) {
            const TMemoryUse use = MeasureMemoryUse();
            std::_Exit(write(ends[1], &use, sizeof(use)) == sizeof(use) ? 0 : 1);
        }
        TMemoryUse use{};
        int status = 0;
        if (::read(ends[0], &use, sizeof(use)) != sizeof(use) || ::waitpid(child, &status, 0) != child) {
            std::abort();
        }
        ::close(ends[0]);
        ::close(ends[1]);
        state.counters["document_MB"] = use.documentBytes / 1e6;
        state.counters["peak_MB"] = use.peakBytes / 1e6;
        state.counters["peak/document"] = use.peakBytes / use.documentBytes;
    }
}

// Runs first, while this process is still small.
BENCHMARK(PeakMemoryOfRequest)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(RequestAgainstGzip)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(RequestOverInstances)
    ->RangeMultiplier(10)
    ->Range(1'000, 1'000'000)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

}  // namespace
