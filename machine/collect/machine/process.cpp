// KELSG_Process: one instance per process, in the order of their numbers; a process that ends while it is
// read is left out. The collector is opt-in: no document contains processes, and they differ from one run to
// the next.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/parse/proc_stat.h"
#include "machine/parse/process_stat.h"
#include "text/find_row.h"
#include "text/numbers.h"

#include <algorithm>

namespace NVORHOST {
namespace {

struct TProcess {
    std::optional<std::string> elementName, description, processId;
    std::optional<TCIMDateTime> creationDate;
    std::optional<std::uint16_t> executionState;
    std::optional<std::uint32_t> priority;
    TInstancePlace place{};
};

constexpr TPropertyRow<TProcess> processRows[] = {
    {"ElementName", &TProcess::elementName, "@/stat comm"},
    {"Description", &TProcess::description, "@/stat flags"},
    {"ProcessID", &TProcess::processId, "@"},
    {"CreationDate", &TProcess::creationDate, "@/stat starttime; /proc/stat btime"},
    {"ExecutionState", &TProcess::executionState, "@/stat state"},
    {"Priority", &TProcess::priority, "@/stat priority"},
    {"TerminationDate", TUnavailable{ECimType::eDateTime}, "none: it lives"},
};

constexpr TCimClass<TProcess> processClass{"KELSG_Process", processRows};
constexpr const IClassDeclaration* classes[] = {&processClass};

constexpr TSourcePattern sourcePatterns[] = {
    "/proc",
    "/proc/stat",
    "/proc/*/stat",
};

struct TStateLetter {
    char letter;
    std::uint16_t executionState;
};

constexpr std::uint16_t unknownState = 0;
constexpr std::uint16_t blocked = 4;

constexpr TStateLetter stateLetters[] = {
    {'R', 3},        // running
    {'S', blocked},  // interruptible sleep
    {'D', blocked},  // uninterruptible sleep
    {'I', blocked},  // idle kernel thread
    {'T', 8},        // stopped
    {'t', 8},        // stopped by a debugger
    {'Z', 7},        // terminated, not yet reaped by its parent
    {'X', 7},        // dead
    {'x', 7},        // dead
    {'P', 1},        // parked
    {'K', 1},        // wakekill, before Linux 4.14
    {'W', 1},        // waking, before Linux 4.14
};

std::uint16_t FindExecutionState(char letter) {
    return FindCell(stateLetters, &TStateLetter::letter, letter, &TStateLetter::executionState)
        .value_or(unknownState);
}

// Converts to the kernel's internal scale, from 0 for the highest real-time priority to 139. A process with
// deadline scheduling has no priority.
std::optional<std::uint32_t> ToPriority(std::int32_t priority) {
    constexpr std::int32_t shift = 100;
    return priority < -shift ? std::nullopt : std::optional(static_cast<std::uint32_t>(priority + shift));
}

std::vector<std::uint32_t> ListProcesses(const ISystemFiles& files) {
    std::vector<std::uint32_t> numbers;
    for (const std::string& name : files.List("/proc").value) {
        if (const auto number = ParseNumber<std::uint32_t>(name)) {
            numbers.push_back(*number);
        }
    }
    std::ranges::sort(numbers);
    return numbers;
}

TProcess MakeProcess(const TCollection& collection, const TProcessStat& stat,
                     std::optional<std::int64_t> bootTime) {
    constexpr std::uint32_t usualTicksPerSecond = 100;  // USER_HZ, fixed on x86
    TProcess process;
    process.elementName = stat.name;
    process.description = stat.isKernelThread ? "Kernel thread" : "Process";
    process.executionState = FindExecutionState(stat.state);
    process.priority = ToPriority(stat.priority);
    if (bootTime) {
        const auto ticks = collection.GetCalls().ReadClockTicksPerSecond().value_or(usualTicksPerSecond);
        process.creationDate =
            collection.ToDateTime(*bootTime + static_cast<std::int64_t>(stat.startTicks / ticks));
    }
    return process;
}

void CollectProcesses(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    const auto bootTime = ParseBootTime(files.ReadText("/proc/stat").value);
    for (const std::uint32_t number : ListProcesses(files)) {
        const std::string name = std::to_string(number);
        const auto stat = ParseProcessStat(files.ReadText("/proc/" + name + "/stat").value);
        if (stat) {
            TProcess process = MakeProcess(collection, *stat, bootTime);
            process.processId = name;
            process.place.folder = "/proc/" + name;
            collection.Commit(processClass, process);
        }
    }
}

}  // namespace

extern constinit const TCollector processCollector{
    .name = "process",
    .description = "What runs on the machine",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectProcesses,
    .isOptIn = true,
    .isForDocuments = false,
};

}  // namespace NVORHOST
