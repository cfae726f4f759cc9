// KELSG_Processor: one instance per populated socket of the SMBIOS table, joined in order with the kernel's
// packages if there are as many packages as sockets; without such a table one instance per package. A socket
// without a package gets the processors' model name if all processors of the machine are of one model.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/logical_processors.h"
#include "machine/collect/frame/operational_status.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/collect/processor/processor_family.h"
#include "machine/collect/processor/processor_node.h"
#include "machine/collect/processor/processor_package.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/smbios_processor.h"
#include "text/printable_text.h"

#include <algorithm>

namespace NVORHOST {
namespace {

struct TProcessor {
    std::optional<std::string> elementName, description, deviceId, uniqueId, stepping, microcode, socketKind;
    std::optional<TOperationalStatus> operationalStatus;
    std::optional<std::uint16_t> addressWidthBits, dataWidthBits, family, enabledCores, upgrade, cores,
        threads;
    std::optional<std::vector<std::uint16_t>> nodes;
    std::optional<std::uint32_t> currentClockMHz, maxClockMHz;
    TInstancePlace place{};
};

constexpr TPropertyRow<TProcessor> processorRows[] = {
    {"ElementName", &TProcessor::elementName, "/proc/cpuinfo model name; text type 4, 10h"},
    {"Description", &TProcessor::description, "/proc/cpuinfo vendor_id, cpu family, model, stepping"},
    {"DeviceID", &TProcessor::deviceId, "text type 4, 04h; @/topology/physical_package_id"},
    {"OperationalStatus", &TProcessor::operationalStatus, "@/online; type 4, 18h"},
    {"AddressWidth", &TProcessor::addressWidthBits, "/proc/cpuinfo flags; type 4, 26h bit 2"},
    {"CurrentClockSpeed", &TProcessor::currentClockMHz,
     "type 4, 16h; @/cpufreq/scaling_cur_freq; /proc/cpuinfo cpu MHz"},
    {"DataWidth", &TProcessor::dataWidthBits, "property AddressWidth"},
    {"Family", &TProcessor::family, "type 4, 06h; type 4, 28h"},
    {"MaxClockSpeed", &TProcessor::maxClockMHz, "@/cpufreq/cpuinfo_max_freq; type 4, 14h"},
    {"UniqueID", &TProcessor::uniqueId, "@/topology/ppin; text type 4, 20h"},
    {"NumberOfEnabledCores", &TProcessor::enabledCores, "type 4, 24h; type 4, 2Ch; /proc/cpuinfo cpu cores"},
    {"Stepping", &TProcessor::stepping, "/proc/cpuinfo stepping"},
    {"UpgradeMethod", &TProcessor::upgrade, "type 4, 19h"},
    {"FirmwareVersion", &TProcessor::microcode, "/proc/cpuinfo microcode"},
    {"NumberOfProcessorCores", &TProcessor::cores, "type 4, 23h; type 4, 2Ah"},
    {"NumberOfHardwareThreads", &TProcessor::threads, "type 4, 25h; type 4, 2Eh"},
    {"SocketType", &TProcessor::socketKind, "text type 4, 32h"},
    {"NUMANodes", &TProcessor::nodes, "/sys/devices/system/node/node*/cpulist"},
};

constexpr TCimClass<TProcessor> processorClass{"KELSG_Processor", processorRows};
constexpr const IClassDeclaration* classes[] = {&processorClass};

constexpr auto sourcePatterns = Join(smbiosSources, std::array<TSourcePattern, 7>{
                                                        "/proc/cpuinfo",
                                                        "/sys/devices/system/cpu",
                                                        "/sys/devices/system/cpu/cpu*/online",
                                                        "/sys/devices/system/cpu/cpu*/topology/*",
                                                        "/sys/devices/system/cpu/cpu*/cpufreq/*",
                                                        "/sys/devices/system/node",
                                                        "/sys/devices/system/node/node*/cpulist",
                                                    });

struct TSocket {
    TSmbiosProcessor fields;
    const TSmbiosStructure* structure;  // never null
};

std::vector<TSocket> ReadSockets(TCollection& collection) {
    std::vector<TSocket> sockets;
    for (const TSmbiosStructure& structure : GetSmbios(collection).GetStructures()) {
        if (structure.GetType() != 4) {
            continue;
        }
        TSmbiosProcessor processor = ParseSmbiosProcessor(structure);
        if (processor.IsCentral() && processor.IsPopulated()) {
            sockets.push_back({std::move(processor), &structure});
        }
    }
    return sockets;
}

std::string DescribeModel(const TLogicalProcessor& info) {
    std::string description = "Central processor";
    if (info.vendor && info.family) {
        description += ", " + *info.vendor + " family " + *info.family + " model " +
                       info.modelNumber.value_or("") + " stepping " + info.stepping.value_or("");
    }
    return description;
}

void SetFromPackage(TCollection& collection, const TProcessorPackage& package, TProcessor& processor) {
    processor.place.folder = GetCpuFolder(package.firstCpu);
    processor.nodes = FindNodes(GetProcessorNodes(collection), package.cpus);
    if (package.info) {
        processor.enabledCores = package.info->coreCount;
        processor.microcode = package.info->microcode;
    }
    processor.currentClockMHz = package.currentClockMHz;
    processor.maxClockMHz = package.maxClockMHz;
    processor.uniqueId = package.inventoryNumber;
    processor.operationalStatus = {package.isOnline ? statusOk : statusStopped};
}

void SetFromInfo(const TLogicalProcessor& info, TProcessor& processor) {
    processor.elementName = info.model;
    processor.description = DescribeModel(info);
    processor.stepping = info.stepping;
}

template <typename T, typename TSource>
void FillIn(std::optional<T>& member, const std::optional<TSource>& found) {
    if (!member && found) {
        member = *found;
    }
}

// DSP0134, 7.5.5: the codes are those of CIM_Processor.UpgradeMethod; 02h is unknown.
std::optional<std::uint16_t> FindUpgrade(std::optional<std::uint8_t> code) {
    constexpr std::uint8_t unknownSocket = 2;
    return code && *code != 0 && *code != unknownSocket ? std::optional<std::uint16_t>(*code) : std::nullopt;
}

void SetFromSocket(const TSmbiosProcessor& socket, std::optional<TSmbiosVersion> version,
                   TProcessor& processor) {
    // The firmware reports the speed at boot. It is preferred because cpufreq's speed changes all the time.
    if (socket.currentSpeedMHz) {
        processor.currentClockMHz = *socket.currentSpeedMHz;
    }
    FillIn(processor.maxClockMHz, socket.maxSpeedMHz);
    FillIn(processor.uniqueId, WithoutPlaceholder(socket.serial));
    FillIn(processor.elementName, WithoutPlaceholder(socket.version));
    processor.family = FindProcessorFamily(socket, version);
    processor.upgrade = FindUpgrade(socket.upgrade);
    processor.cores = socket.cores;
    processor.threads = socket.threads;
    processor.socketKind = WithoutPlaceholder(socket.socketKind);
    // The firmware also counts cores that the kernel was started without.
    if (socket.enabledCores) {
        processor.enabledCores = socket.enabledCores;
    }
    // The firmware reports the status at boot, when all but one processor may be idle. The kernel's is
    // preferred.
    if (socket.status && !processor.operationalStatus) {
        processor.operationalStatus = FindProcessorStatus(*socket.status);
    }
}

void SetWidths(std::optional<bool> is64Bit, TProcessor& processor) {
    if (is64Bit) {
        processor.addressWidthBits = *is64Bit ? std::uint16_t{64} : std::uint16_t{32};
        processor.dataWidthBits = processor.addressWidthBits;
    }
}

// Uses the processor's own flags, else those of the machine's first processor; true as well if the firmware
// reports 64-bit capability.
std::optional<bool> Is64Bit(const std::vector<TLogicalProcessor>& processors, const TLogicalProcessor* own,
                            const TSmbiosProcessor& socket) {
    if (socket.Is64BitCapable()) {
        return true;
    }
    if (own != nullptr) {
        return own->isLongModeCapable;
    }
    return processors.empty() ? std::nullopt : processors.front().isLongModeCapable;
}

// Returns the first processor if all processors of the machine are of one model; else null.
const TLogicalProcessor* FindCommonModel(const std::vector<TLogicalProcessor>& processors) {
    const auto isLikeFirst = [&](const TLogicalProcessor& row) {
        const TLogicalProcessor& first = processors.front();
        return row.model == first.model && row.vendor == first.vendor && row.family == first.family &&
               row.modelNumber == first.modelNumber && row.stepping == first.stepping;
    };
    return !processors.empty() && std::ranges::all_of(processors, isLikeFirst) ? &processors.front()
                                                                               : nullptr;
}

TProcessor MakeFromSocket(TCollection& collection, const TSmbiosProcessor& socket,
                          const TProcessorPackage* package) {
    TProcessor processor;
    if (package != nullptr) {
        SetFromPackage(collection, *package, processor);
    }
    const auto& processors = GetLogicalProcessors(collection);
    const TLogicalProcessor* own = package != nullptr && package->info ? &*package->info : nullptr;
    if (const TLogicalProcessor* info = own != nullptr ? own : FindCommonModel(processors)) {
        SetFromInfo(*info, processor);
    }
    SetFromSocket(socket, GetSmbios(collection).GetVersion(), processor);
    FillIn(processor.description, std::optional<std::string>("Central processor"));
    SetWidths(Is64Bit(processors, own, socket), processor);
    return processor;
}

TProcessor MakeFromPackage(TCollection& collection, const TProcessorPackage& package) {
    TProcessor processor;
    SetFromPackage(collection, package, processor);
    if (package.info) {
        SetFromInfo(*package.info, processor);
        SetWidths(package.info->isLongModeCapable, processor);
    }
    FillIn(processor.description, std::optional<std::string>("Central processor"));
    return processor;
}

std::string PackageName(std::uint32_t id) {
    return "package " + std::to_string(id);
}

using TProcessors = std::vector<TKeyedRecord<TProcessor>>;

// Returns the package in each socket, in order; nullopt if unknown. Package ids are not socket numbers, so
// packages are matched in order, and only if there are as many packages as sockets.
std::vector<std::optional<TProcessorPackage>> MatchPackages(const ISystemFiles& files,
                                                            std::size_t socketCount,
                                                            const std::vector<TProcessorPackage>& packages) {
    std::vector<std::optional<TProcessorPackage>> matches(socketCount);
    if (packages.size() == socketCount) {
        std::ranges::copy(packages, matches.begin());
        return matches;
    }
    // The kernel hides packages that are offline as a whole. If the ids of the visible packages are socket
    // numbers, the remaining sockets have the hidden packages.
    const bool areNumbersOfSockets = std::ranges::all_of(
        packages, [&](const TProcessorPackage& package) { return package.id < socketCount; });
    if (packages.empty() || !areNumbersOfSockets || !HasHiddenPackage(files)) {
        return matches;
    }
    for (std::size_t i = 0; i < socketCount; ++i) {
        matches[i].emplace();
        matches[i]->id = static_cast<std::uint32_t>(i);
        matches[i]->isOnline = false;
    }
    for (const TProcessorPackage& package : packages) {
        matches[package.id] = package;
    }
    return matches;
}

TProcessors JoinSockets(TCollection& collection, const std::vector<TSocket>& sockets,
                        const std::vector<TProcessorPackage>& packages) {
    TProcessors processors;
    const auto matches = MatchPackages(collection.GetFiles(), sockets.size(), packages);
    for (std::size_t i = 0; i < sockets.size(); ++i) {
        const std::string position = matches[i] ? PackageName(matches[i]->id) : "socket " + std::to_string(i);
        const auto name = WithoutPlaceholder(sockets[i].fields.socket);
        TProcessor processor =
            MakeFromSocket(collection, sockets[i].fields, matches[i] ? &*matches[i] : nullptr);
        processor.place.structure = sockets[i].structure;
        processors.push_back(
            {std::move(processor), {name ? std::optional(SqueezeBlanks(*name)) : std::nullopt, position}});
    }
    return processors;
}

TProcessors TakePackages(TCollection& collection, const std::vector<TProcessorPackage>& packages) {
    TProcessors processors;
    for (const TProcessorPackage& package : packages) {
        processors.push_back({MakeFromPackage(collection, package), {std::nullopt, PackageName(package.id)}});
    }
    return processors;
}

void CollectProcessors(TCollection& collection) {
    const auto sockets = ReadSockets(collection);
    const auto packages = ReadProcessorPackages(collection);
    CommitKeyed(
        collection, processorClass,
        sockets.empty() ? TakePackages(collection, packages) : JoinSockets(collection, sockets, packages),
        &TProcessor::deviceId, "processor");
}

}  // namespace

extern constinit const TCollector processorCollector{
    .name = "processor",
    .description = "Processors in their sockets",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectProcessors,
};

}  // namespace NVORHOST
