// Measures collections from machines of growing size, whose time should be proportional to the size. The
// machines are trees below TMPDIR, which is best on a file system in memory.
#include "bench/ratio.h"
#include "machine/collect/run/collection_run.h"
#include "machine/system/rooted_files.h"

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace NVORHOST {
namespace {

// A machine's files in a temporary folder, removed on destruction. On a file system, the time to find a file
// does not depend on the number of files; tables in this process would outgrow the processor's caches.
class TGeneratedTree {
  public:
    TGeneratedTree() : root_((std::filesystem::temp_directory_path() / "noxinfo-bench-XXXXXX").string()) {
        if (::mkdtemp(root_.data()) == nullptr) {
            throw std::runtime_error("cannot make a temporary directory");
        }
    }
    ~TGeneratedTree() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    TGeneratedTree(const TGeneratedTree&) = delete;
    TGeneratedTree& operator=(const TGeneratedTree&) = delete;

    const std::string& GetRoot() const { return root_; }

    void Add(const std::string& path, const std::string& bytes) {
        std::ofstream file(MakePlace(path), std::ios::binary);
        file << bytes;
        if (!file.flush()) {
            throw std::runtime_error("cannot write " + path);
        }
    }
    void AddLink(const std::string& path, const std::string& target) {
        std::filesystem::create_symlink(target, MakePlace(path));
    }

  private:
    std::string MakePlace(const std::string& path) {
        const std::string folder = path.substr(0, path.rfind('/'));
        if (folder != lastFolder_) {
            std::filesystem::create_directories(root_ + folder);
            lastFolder_ = folder;
        }
        return root_ + path;
    }

    std::string root_, lastFolder_;
};

// System calls of a machine that has only files.
struct TNoSystemCalls final : ISystemCalls {
    std::optional<std::string> ReadKernelRelease() const override { return "6.1.0"; }
    std::optional<std::string> ReadNodeName() const override { return "large"; }
    std::optional<std::string> ReadArchitecture() const override { return "x86_64"; }
    std::optional<std::uint32_t> ReadPageSizeBytes() const override { return 4096; }
    std::optional<std::uint32_t> ReadClockTicksPerSecond() const override { return 100; }
    std::optional<std::string> ReadHypervisorSignature() const override { return std::nullopt; }
    std::optional<int> ReadUtcOffsetMinutes(std::int64_t) const override { return 0; }
    std::optional<std::vector<TInterfaceAddress>> ReadInterfaceAddresses() const override {
        return std::nullopt;
    }
    std::optional<TFileSystemSpace> ReadFileSystemSpace(std::string_view) const override {
        return std::nullopt;
    }
};

template <typename... TArguments>
std::string Format(const char* format, TArguments... arguments) {
    char text[256];
    const int length = std::snprintf(text, sizeof text, format, arguments...);
    return {text, static_cast<std::size_t>(length)};
}

// Functions of the most frequent classes, such as display, USB and network, on as many buses as needed.
void AddPciFunctions(TGeneratedTree& files, unsigned count) {
    constexpr unsigned functionsOfBus = 256;
    constexpr char classes[][2] = {{0x00, 0x02}, {0x00, 0x03}, {0x03, 0x0C}, {0x04, 0x06}, {0x08, 0x01}};
    for (unsigned i = 0; i < count; ++i) {
        const unsigned bus = i / functionsOfBus;
        const unsigned place = i % functionsOfBus;
        const std::string address = Format("%04x:%02x:%02x.%x", bus / 256, bus % 256, place / 8, place % 8);
        const std::string folder = Format("/sys/devices/pci%04x:%02x/", bus / 256, bus % 256) + address;
        std::string config(64, '\0');
        config.replace(0, 4, "\x86\x80\x34\x12");
        config.replace(0x0A, 2, classes[i % std::size(classes)], 2);
        files.AddLink("/sys/bus/pci/devices/" + address, folder);
        files.Add(folder + "/config", config);
        files.Add(folder + "/ari_enabled", "0\n");
    }
}

void AddDisks(TGeneratedTree& files, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        const std::string unit = Format("%u:0:%u:0", i / 128, i % 128);
        const std::string device = Format("/sys/devices/pci0000:00/0000:00:%02x.0/host%u/target%u:0:%u/",
                                          i / 128, i / 128, i / 128, i % 128) +
                                   unit;
        const std::string name = Format("sd%u", i);
        const std::string block = device + "/block/" + name;
        files.AddLink("/sys/block/" + name, block);
        files.AddLink(block + "/device", device);
        files.AddLink(device + "/subsystem", "/sys/bus/scsi");
        files.Add(block + "/size", "1172123568\n");
        files.Add(block + "/removable", "0\n");
        files.Add(block + "/dev", Format("8:%u\n", i));
        files.Add(block + "/queue/logical_block_size", "512\n");
        files.Add(device + "/type", "0\n");
        files.Add(device + "/vendor", "SAMPLE\n");
        files.Add(device + "/model", "SM600MP0005\n");
        files.Add(device + "/state", "running\n");
        files.Add(device + "/wwid", Format("naa.5000c500%08x\n", i));
        files.Add(block + "/" + name + "1/partition", "1\n");
        files.Add(block + "/" + name + "1/size", "1172121520\n");
        files.Add(block + "/" + name + "1/dev", Format("259:%u\n", i));
    }
}

void AddProcessors(TGeneratedTree& files, unsigned count) {
    constexpr unsigned processorsOfPackage = 64;
    std::string info;
    for (unsigned i = 0; i < count; ++i) {
        info += Format(
            "processor\t: %u\nvendor_id\t: GenuineIntel\nmodel name\t: Large Processor\n"
            "cpu MHz\t\t: 2000.000\nphysical id\t: %u\nflags\t\t: fpu lm\n\n",
            i, i / processorsOfPackage);
        const std::string folder = Format("/sys/devices/system/cpu/cpu%u", i);
        files.Add(folder + "/topology/physical_package_id", Format("%u\n", i / processorsOfPackage));
        files.Add(folder + "/cpufreq/cpuinfo_max_freq", "3000000\n");
    }
    files.Add("/proc/cpuinfo", info);
}

// Size 8 has 10,000 functions, 2,000 disks and 1,024 processors.
void FillMachine(TGeneratedTree& tree, unsigned size) {
    AddPciFunctions(tree, 1250 * size);
    AddDisks(tree, 250 * size);
    AddProcessors(tree, 128 * size);
}

std::size_t CollectOnce(const TGeneratedTree& tree) {
    const TRootedFiles files(tree.GetRoot());
    const TNoSystemCalls calls;
    TMemoryNamespace target;
    std::size_t instances = 0;
    for (const TCollectReport& report : CollectAll({files, calls, target, std::nullopt})) {
        instances += report.instances;
    }
    return instances;
}

// Reports the time per unit of size, relative to the smallest machine: 1 is linear. Both are measured
// alternately, so that drifts in the speed of the computer cancel out.
void CollectOfSize(benchmark::State& state) {
    constexpr int runs = 5;
    const auto size = static_cast<unsigned>(state.range(0));
    TGeneratedTree smallest;
    TGeneratedTree grown;
    FillMachine(smallest, 1);
    FillMachine(grown, size);
    TBestTime smallestTime;
    TBestTime grownTime;
    std::size_t instances = 0;
    for ([[maybe_unused]] auto iteration : state) {
        for (int run = 0; run < runs; ++run) {
            smallestTime.Add(CpuSeconds([&] { benchmark::DoNotOptimize(CollectOnce(smallest)); }));
            grownTime.Add(CpuSeconds([&] { instances = CollectOnce(grown); }));
        }
    }
    state.counters["instances"] = static_cast<double>(instances);
    state.counters["milliseconds"] = grownTime.GetSeconds() * 1000;
    state.counters["ratio_to_linear"] = grownTime.GetSeconds() / smallestTime.GetSeconds() / size;
}
BENCHMARK(CollectOfSize)->RangeMultiplier(2)->Range(1, 8)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace NVORHOST
