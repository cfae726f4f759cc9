// The processor packages as the kernel knows them.
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
    std::uint32_t id = 0;                          ///< physical_package_id
    std::uint32_t firstCpu = 0;                    ///< its lowest processor that is online, else the lowest
    std::optional<TLogicalProcessor> info;         ///< of that one; absent when /proc/cpuinfo lacks it
    std::optional<std::uint32_t> maxClockMHz;      ///< of the package's fastest kind of core, as cpufreq says
    std::optional<std::uint32_t> currentClockMHz;  ///< of its first processor, cpufreq before cpuinfo
    std::optional<std::string> inventoryNumber;    ///< ppin: the package's own number, which root may read
    bool isOnline = true;                          ///< at least one of its processors is
};

/// In the order of their ids. A package whose processors are all offline is missing where the kernel hides
/// the topology of such processors; HasHiddenPackage detects this.
std::vector<TProcessorPackage> ReadProcessorPackages(TCollection& collection);

/// True where a processor is offline and sysfs does not have its package.
bool HasHiddenPackage(const ISystemFiles& files);

}  // namespace NVORHOST
