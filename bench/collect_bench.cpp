// Collecting from machines of growing size: twice the machine is to take twice the time.
#include "bench/ratio.h"
#include "vorhost/collect/collector.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace NVORHOST {
namespace {

// A machine's files by their paths, links not followed but for whole folders of one name: as much of a tree
// as the workload needs, with accesses that cost the same however large it is.
class TGeneratedFiles final : public ISystemFiles {
  public:
    void Add(const std::string& path, std::string bytes) {
        AddToFolder(path);
        files_[path] = std::move(bytes);
    }
    void AddLink(const std::string& path, std::string target) {
        AddToFolder(path);
        links_[path] = std::move(target);
    }

    TReadResult<std::string> ReadText(std::string_view path) const override {
        return Find(files_, Resolve(path));
    }
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override {
        auto result = Find(files_, Resolve(path));
        result.value.resize(std::min(result.value.size(), maxBytes));
        return result;
    }
    TReadResult<std::vector<std::string>> List(std::string_view path) const override {
        const auto found = folders_.find(Resolve(path));
        if (found == folders_.end()) {
            return {};
        }
        return {EReadStatus::ok, {found->second.begin(), found->second.end()}, {}};
    }
    TReadResult<std::string> ReadLink(std::string_view path) const override {
        return Find(links_, std::string(path));
    }
    bool Exists(std::string_view path) const override {
        const std::string resolved = Resolve(path);
        return files_.contains(resolved) || folders_.contains(resolved) || links_.contains(resolved);
    }

  private:
    static TReadResult<std::string> Find(const std::unordered_map<std::string, std::string>& table,
                                         const std::string& path) {
        const auto found = table.find(path);
        return found == table.end() ? TReadResult<std::string>{}
                                    : TReadResult<std::string>{EReadStatus::ok, found->second, {}};
    }

    void AddToFolder(std::string path) {
        for (auto slash = path.rfind('/'); slash != std::string::npos && slash != 0;
             slash = path.rfind('/')) {
            const std::string name = path.substr(slash + 1);
            path.resize(slash);
            if (!folders_[path].insert(name).second) {
                return;
            }
        }
    }

    // Links of the workload are absolute; one on the way is replaced by its target.
    std::string Resolve(std::string_view path) const {
        std::string resolved;
        while (!path.empty()) {
            const auto end = std::min(path.find('/', 1), path.size());
            resolved += path.substr(0, end);
            path.remove_prefix(end);
            if (const auto link = links_.find(resolved); link != links_.end()) {
                resolved = link->second;
            }
        }
        return resolved;
    }

    std::unordered_map<std::string, std::string> files_, links_;
    std::unordered_map<std::string, std::set<std::string>> folders_;
};

// A machine of which nothing is asked but what its files say.
struct TNoSystemCalls final : ISystemCalls {
    std::optional<std::string> KernelRelease() const override { return "6.1.0"; }
    std::optional<std::string> NodeName() const override { return "large"; }
    std::optional<std::string> Architecture() const override { return "x86_64"; }
    std::optional<std::uint32_t> PageSizeBytes() const override { return 4096; }
    std::optional<std::uint32_t> ClockTicksPerSecond() const override { return 100; }
    std::optional<std::string> HypervisorSignature() const override { return std::nullopt; }
    std::optional<int> UtcOffsetMinutes(std::int64_t) const override { return 0; }
    std::optional<std::vector<TInterfaceAddress>> InterfaceAddresses() const override { return std::nullopt; }
};

template <typename... TArguments>
std::string Format(const char* format, TArguments... arguments) {
    char text[256];
    const int length = std::snprintf(text, sizeof text, format, arguments...);
    return {text, static_cast<std::size_t>(length)};
}

// Functions of the classes that occur most, display, USB and network among them, on as many buses as it
// takes.
void AddPciFunctions(TGeneratedFiles& files, unsigned count) {
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

void AddDisks(TGeneratedFiles& files, unsigned count) {
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

void AddProcessors(TGeneratedFiles& files, unsigned count) {
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

// 10,000 functions, 2,000 disks and 1,024 processors at size 8.
TGeneratedFiles MakeMachine(unsigned size) {
    TGeneratedFiles files;
    AddPciFunctions(files, 1250 * size);
    AddDisks(files, 250 * size);
    AddProcessors(files, 128 * size);
    return files;
}

std::size_t CollectOnce(const TGeneratedFiles& files) {
    const TNoSystemCalls calls;
    TMemoryNamespace target;
    std::size_t instances = 0;
    for (const TCollectReport& report : CollectAll({files, calls, target, std::nullopt})) {
        instances += report.instances;
    }
    return instances;
}

double MeasureSeconds(const TGeneratedFiles& files) {
    constexpr int runs = 5;
    TBestTime best;
    for (int run = 0; run < runs; ++run) {
        best.Add(CpuSeconds([&] { benchmark::DoNotOptimize(CollectOnce(files)); }));
    }
    return best.GetSeconds();
}

// How much longer the machine of `size` takes than the smallest one, for each unit of its size: 1 is linear.
void CollectOfSize(benchmark::State& state) {
    const auto size = static_cast<unsigned>(state.range(0));
    const TGeneratedFiles files = MakeMachine(size);
    const double smallest = MeasureSeconds(MakeMachine(1));
    double seconds = 0;
    for ([[maybe_unused]] auto iteration : state) {
        seconds = MeasureSeconds(files);
    }
    state.counters["instances"] = static_cast<double>(CollectOnce(files));
    state.counters["milliseconds"] = seconds * 1000;
    state.counters["ratio_to_linear"] = seconds / smallest / size;
}
BENCHMARK(CollectOfSize)->RangeMultiplier(2)->Range(1, 8)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace NVORHOST
