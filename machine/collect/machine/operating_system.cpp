// KELSG_OperatingSystem: one instance with the running system, its memory and its clock.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/operational_status.h"
#include "machine/parse/meminfo.h"
#include "machine/parse/os_release.h"
#include "machine/parse/proc_stat.h"
#include "machine/parse/proc_version.h"
#include "machine/parse/release_files.h"
#include "machine/parse/utmp.h"
#include "text/ascii.h"

#include <algorithm>

namespace NVORHOST {
namespace {

struct TOperatingSystem {
    std::optional<std::string> elementName, description, csName, kernelRelease, version;
    std::optional<TOperationalStatus> operationalStatus;
    std::optional<std::int16_t> currentTimeZone;  // minutes east of UTC
    std::optional<std::uint32_t> pageSizeBytes, numberOfLicensedUsers, numberOfProcesses, numberOfUsers;
    std::optional<std::uint64_t> freePhysicalKiB, freeVirtualKiB, totalVisibleKiB, totalSwapKiB,
        totalVirtualKiB;
    std::optional<TCIMDateTime> lastBootUpTime, localDateTime;
    std::optional<std::uint16_t> osType;
};

constexpr TPropertyRow<TOperatingSystem> operatingSystemRows[] = {
    {"ElementName", &TOperatingSystem::elementName,
     "/etc/os-release PRETTY_NAME; /usr/lib/os-release PRETTY_NAME; /etc/redhat-release; /etc/SuSE-release; "
     "/etc/debian_version"},
    {"Description", &TOperatingSystem::description, "call uname release; call uname machine; /proc/version"},
    {"OperationalStatus", &TOperatingSystem::operationalStatus, "constant"},
    {"CSName", &TOperatingSystem::csName, "call uname nodename"},
    {"CurrentTimeZone", &TOperatingSystem::currentTimeZone, "call localtime"},
    {"PageSize", &TOperatingSystem::pageSizeBytes, "call getauxval AT_PAGESZ"},
    {"FreePhysicalMemory", &TOperatingSystem::freePhysicalKiB, "/proc/meminfo MemFree"},
    {"FreeVirtualMemory", &TOperatingSystem::freeVirtualKiB, "/proc/meminfo MemFree; /proc/meminfo SwapFree"},
    {"KernelRelease", &TOperatingSystem::kernelRelease, "call uname release; /proc/version"},
    {"LastBootUpTime", &TOperatingSystem::lastBootUpTime, "/proc/stat btime"},
    {"LocalDateTime", &TOperatingSystem::localDateTime, "call localtime"},
    {"NumberOfLicensedUsers", &TOperatingSystem::numberOfLicensedUsers, "constant"},
    {"NumberOfProcesses", &TOperatingSystem::numberOfProcesses, "/proc"},
    {"NumberOfUsers", &TOperatingSystem::numberOfUsers, "/run/utmp"},
    {"OSType", &TOperatingSystem::osType, "constant"},
    {"Version", &TOperatingSystem::version,
     "/etc/os-release VERSION_ID; /usr/lib/os-release VERSION_ID; /etc/redhat-release; /etc/SuSE-release; "
     "/etc/debian_version; property KernelRelease"},
    {"TotalSwapSpaceSize", &TOperatingSystem::totalSwapKiB, "/proc/meminfo SwapTotal"},
    {"TotalVirtualMemorySize", &TOperatingSystem::totalVirtualKiB,
     "/proc/meminfo MemTotal; /proc/meminfo SwapTotal"},
    {"TotalVisibleMemorySize", &TOperatingSystem::totalVisibleKiB, "/proc/meminfo MemTotal"},
};

constexpr TCimClass<TOperatingSystem> operatingSystemClass{"KELSG_OperatingSystem", operatingSystemRows};
constexpr const IClassDeclaration* classes[] = {&operatingSystemClass};

constexpr std::array<TSourcePattern, 10> sourcePatterns{
    "/etc/os-release",   "/usr/lib/os-release", "/etc/redhat-release",
    "/etc/SuSE-release", "/etc/debian_version", "/proc",
    "/proc/meminfo",     "/proc/stat",          "/proc/version",
    "/run/utmp",
};

// Release files of systems older than os-release. The first file that names the system is used.
struct TReleaseFile {
    std::string_view path;
    TOsRelease (*parse)(std::string_view text);
};

constexpr TReleaseFile olderReleaseFiles[] = {
    {"/etc/redhat-release", ParseRedHatRelease},
    {"/etc/SuSE-release", ParseSuseRelease},
    {"/etc/debian_version", ParseDebianVersion},
};

std::optional<std::uint64_t> Add(std::optional<std::uint64_t> left, std::optional<std::uint64_t> right) {
    return left && right ? std::optional(*left + *right) : std::nullopt;
}

void SetMemory(const TMemInfo& memory, TOperatingSystem& system) {
    system.freePhysicalKiB = memory.freeKiB;
    system.freeVirtualKiB = Add(memory.freeKiB, memory.swapFreeKiB);
    system.totalVisibleKiB = memory.totalKiB;
    system.totalSwapKiB = memory.swapTotalKiB;
    system.totalVirtualKiB = Add(memory.totalKiB, memory.swapTotalKiB);
}

TOsRelease ReadOsRelease(const ISystemFiles& files) {
    auto text = files.ReadText("/etc/os-release");
    if (!text.IsOk()) {
        text = files.ReadText("/usr/lib/os-release");
    }
    TOsRelease release = ParseOsRelease(text.value);
    if (release.prettyName || release.name) {
        return release;
    }
    for (const TReleaseFile& file : olderReleaseFiles) {
        TOsRelease older = file.parse(files.ReadText(file.path).value);
        if (older.prettyName) {
            return older;
        }
    }
    return release;
}

// Falls back to /proc/version for a captured tree without the answers of system calls.
std::optional<std::string> FindKernelRelease(TCollection& collection) {
    if (auto release = collection.GetCalls().ReadKernelRelease()) {
        return release;
    }
    return ParseKernelRelease(collection.GetFiles().ReadText("/proc/version").value);
}

// Returns the leading number of a release: "6.1.0" for "6.1.0-13-amd64".
std::optional<std::string> KernelNumber(const std::optional<std::string>& release) {
    if (!release) {
        return std::nullopt;
    }
    const auto length = std::min(release->find_first_not_of("0123456789."), release->size());
    return length == 0 ? std::nullopt : std::optional(release->substr(0, length));
}

void SetNames(TCollection& collection, TOperatingSystem& system) {
    const TOsRelease release = ReadOsRelease(collection.GetFiles());
    const ISystemCalls& calls = collection.GetCalls();
    system.csName = calls.ReadNodeName();
    system.kernelRelease = FindKernelRelease(collection);
    system.elementName = release.prettyName ? release.prettyName : release.name;
    if (!system.elementName) {
        system.elementName = "Linux";
    }
    system.version = release.versionId ? release.versionId : KernelNumber(system.kernelRelease);
    system.description = "Linux";
    if (system.kernelRelease) {
        *system.description += " " + *system.kernelRelease;
    }
    if (const auto architecture = calls.ReadArchitecture()) {
        *system.description += " on " + *architecture;
    }
}

void SetTimes(TCollection& collection, TOperatingSystem& system) {
    system.localDateTime = collection.GetLocalTime();
    if (system.localDateTime) {
        system.currentTimeZone = system.localDateTime->GetUTCOffset();
    }
    const auto bootTime = ParseBootTime(collection.GetFiles().ReadText("/proc/stat").value);
    if (bootTime) {
        system.lastBootUpTime = collection.ToDateTime(*bootTime);
    }
}

// The folder of a process has a name of digits. A captured tree without such folders lacks the processes.
std::optional<std::uint32_t> CountProcesses(const ISystemFiles& files) {
    const auto names = files.List("/proc").value;
    const auto isProcess = [](const std::string& name) { return std::ranges::all_of(name, IsDigit); };
    const auto count = std::ranges::count_if(names, isProcess);
    return count == 0 ? std::nullopt : std::optional(static_cast<std::uint32_t>(count));
}

void SetCounts(const ISystemFiles& files, TOperatingSystem& system) {
    constexpr std::uint32_t unlimited = 0;
    system.numberOfLicensedUsers = unlimited;
    system.numberOfProcesses = CountProcesses(files);
    if (const auto sessions = files.ReadText("/run/utmp"); sessions.IsOk()) {
        system.numberOfUsers = CountUserProcesses(sessions.value);
    }
}

void CollectOperatingSystem(TCollection& collection) {
    constexpr std::uint16_t linuxType = 36;
    const ISystemFiles& files = collection.GetFiles();
    TOperatingSystem system;
    system.operationalStatus = {statusOk};
    system.osType = linuxType;
    system.pageSizeBytes = collection.GetCalls().ReadPageSizeBytes();
    SetNames(collection, system);
    SetMemory(ParseMemInfo(files.ReadText("/proc/meminfo").value), system);
    SetTimes(collection, system);
    SetCounts(files, system);
    collection.Commit(operatingSystemClass, system);
}

}  // namespace

extern constinit const TCollector operatingSystemCollector{
    .name = "operating-system",
    .description = "The running system: name, kernel, memory, times",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectOperatingSystem,
};

}  // namespace NVORHOST
