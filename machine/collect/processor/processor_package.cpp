#include "machine/collect/processor/processor_package.h"

#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/kernel_name.h"
#include "machine/collect/frame/logical_processors.h"
#include "machine/parse/cpu_list.h"
#include "machine/parse/placeholders.h"
#include "text/find_row.h"

#include <algorithm>
#include <map>
#include <set>

namespace NVORHOST {
namespace {

std::vector<std::uint32_t> ReadPackageCpus(const ISystemFiles& files, std::uint32_t cpu) {
    const std::string topology = GetCpuFolder(cpu) + "/topology/";
    auto list = ReadAttribute(files, topology + "package_cpus_list");
    if (!list) {
        list = ReadAttribute(files, topology + "core_siblings_list");  // its name before Linux 5.3
    }
    return list ? ParseCpuList(*list) : std::vector<std::uint32_t>{};
}

// Processors by package id.
using TPackages = std::map<std::uint32_t, std::vector<std::uint32_t>>;

// Reads one list per package: the list of a package's first processor has the others.
TPackages ReadTopology(const ISystemFiles& files) {
    TPackages packages;
    std::set<std::uint32_t> seen;
    for (const std::uint32_t cpu : ListCpus(files)) {
        if (seen.contains(cpu)) {
            continue;
        }
        const auto id = ReadNumber<std::uint32_t>(files, GetCpuFolder(cpu) + "/topology/physical_package_id");
        if (!id) {
            continue;
        }
        auto& members = packages[*id];
        for (const std::uint32_t member : ReadPackageCpus(files, cpu)) {
            if (seen.insert(member).second) {
                members.push_back(member);
            }
        }
        if (seen.insert(cpu).second) {
            members.push_back(cpu);
        }
    }
    return packages;
}

// Groups by "physical id" of /proc/cpuinfo, if sysfs has no topology. Without such ids there is one package.
TPackages GroupByCpuInfo(const std::vector<TLogicalProcessor>& processors) {
    TPackages packages;
    for (const TLogicalProcessor& processor : processors) {
        packages[processor.packageId.value_or(0)].push_back(processor.number);
    }
    return packages;
}

// A processor that cannot go offline, often the first one, has no "online" file.
bool IsOnline(const ISystemFiles& files, std::uint32_t cpu) {
    constexpr std::uint8_t isOffline = 0;
    return ReadNumber<std::uint8_t>(files, GetCpuFolder(cpu) + "/online") != isOffline;
}

std::optional<std::uint32_t> ReadMHz(const ISystemFiles& files, std::uint32_t cpu, std::string_view name) {
    const auto kHz = ReadNumber<std::uint64_t>(files, GetCpuFolder(cpu) + "/cpufreq/" + std::string(name));
    return kHz && *kHz >= 1000 ? std::optional(static_cast<std::uint32_t>(*kHz / 1000)) : std::nullopt;
}

// Returns the highest clock of the cores, which may differ within a package.
std::optional<std::uint32_t> ReadMaxMHz(const ISystemFiles& files, const std::vector<std::uint32_t>& cpus) {
    std::optional<std::uint32_t> fastest;
    for (const std::uint32_t cpu : cpus) {
        const auto clock = ReadMHz(files, cpu, "cpuinfo_max_freq");
        if (!clock && !fastest) {
            return std::nullopt;  // the machine has no cpufreq
        }
        fastest = std::max(fastest, clock);
    }
    return fastest;
}

const TLogicalProcessor* FindProcessor(const std::vector<TLogicalProcessor>& processors, std::uint32_t cpu) {
    return FindRow(processors, &TLogicalProcessor::number, cpu);
}

}  // namespace

std::string GetCpuFolder(std::uint32_t cpu) {
    return "/sys/devices/system/cpu/cpu" + std::to_string(cpu);
}

std::vector<std::uint32_t> ListCpus(const ISystemFiles& files) {
    std::vector<std::uint32_t> cpus;
    for (const std::string& name : files.List("/sys/devices/system/cpu").value) {
        const auto number =
            name.starts_with("cpu") ? ParseNumber<std::uint32_t>(name.substr(3)) : std::nullopt;
        if (number) {
            cpus.push_back(*number);
        }
    }
    std::sort(cpus.begin(), cpus.end());
    return cpus;
}

std::vector<TProcessorPackage> ReadProcessorPackages(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    const auto& processors = GetLogicalProcessors(collection);
    TPackages topology = ReadTopology(files);
    if (topology.empty()) {
        topology = GroupByCpuInfo(processors);
    }
    std::vector<TProcessorPackage> packages;
    for (auto& [id, cpus] : topology) {
        TProcessorPackage package;
        package.id = id;
        std::ranges::sort(cpus);
        const auto online =
            std::ranges::find_if(cpus, [&](std::uint32_t cpu) { return IsOnline(files, cpu); });
        package.isOnline = online != cpus.end();
        package.firstCpu = package.isOnline ? *online : cpus.front();
        if (const TLogicalProcessor* info = FindProcessor(processors, package.firstCpu)) {
            package.info = *info;
        }
        package.maxClockMHz = ReadMaxMHz(files, cpus);
        package.currentClockMHz = ReadMHz(files, package.firstCpu, "scaling_cur_freq");
        if (!package.currentClockMHz && package.info) {
            package.currentClockMHz = package.info->clockMHz;
        }
        package.inventoryNumber =
            WithoutPlaceholder(ReadAttribute(files, GetCpuFolder(package.firstCpu) + "/topology/ppin"));
        package.cpus = std::move(cpus);
        packages.push_back(std::move(package));
    }
    return packages;
}

bool HasHiddenPackage(const ISystemFiles& files) {
    return std::ranges::any_of(ListCpus(files), [&](std::uint32_t cpu) {
        return !IsOnline(files, cpu) && !files.Exists(GetCpuFolder(cpu) + "/topology/physical_package_id");
    });
}

}  // namespace NVORHOST
