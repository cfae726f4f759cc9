// The processor packages in sysfs and /proc/cpuinfo.
#pragma once

#include "machine/parse/cpuinfo.h"
#include "machine/system/system_files.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

class TCollection;

struct TProcessorPackage {
    std::uint32_t id = 0;                      ///< physical_package_id
    std::vector<std::uint32_t> cpus;           ///< its processors, ascending
    std::uint32_t firstCpu = 0;                ///< its lowest online processor; its lowest if none is online
    std::optional<TLogicalProcessor> info;     ///< entry of `firstCpu`; absent if /proc/cpuinfo lacks it
    std::optional<std::uint32_t> maxClockMHz;  ///< clock of the fastest core, from cpufreq
    std::optional<std::uint32_t> currentClockMHz;  ///< clock of `firstCpu`, from cpufreq or else cpuinfo
    std::optional<std::string> inventoryNumber;    ///< the package's ppin, readable for root only
    bool isOnline = true;                          ///< true if at least one of its processors is online
};

/// Returns the packages in the order of their ids. A package whose processors are all offline is missing if
/// the kernel hides the topology of offline processors; HasHiddenPackage detects this.
std::vector<TProcessorPackage> ReadProcessorPackages(TCollection& collection);

/// True if a processor is offline and sysfs lacks its package.
bool HasHiddenPackage(const ISystemFiles& files);

/// Returns N of every /sys/devices/system/cpu/cpuN, ascending.
std::vector<std::uint32_t> ListCpus(const ISystemFiles& files);

/// Returns "/sys/devices/system/cpu/cpuN" for `cpu` N.
std::string GetCpuFolder(std::uint32_t cpu);

}  // namespace NVORHOST
