// The SPD EEPROMs of memory modules that the kernel exposes, and their assignment to modules.
#pragma once

#include "machine/collect/frame/source_patterns.h"
#include "machine/parse/spd_eeprom.h"
#include "machine/system/system_files.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

/// The paths that ReadSpdModules may access.
inline constexpr std::array<TSourcePattern, 6> spdSources{
    "/sys/bus/i2c/drivers/ee1004",  "/sys/bus/i2c/drivers/ee1004/*/eeprom",
    "/sys/bus/i2c/drivers/spd5118", "/sys/bus/i2c/drivers/spd5118/*/eeprom",
    "/sys/bus/i2c/drivers/at24",    "/sys/bus/i2c/drivers/at24/*/eeprom",
};

/// Returns every EEPROM of the drivers for SPD EEPROMs that is readable and well-formed.
std::vector<TSpdModule> ReadSpdModules(const ISystemFiles& files);

/// The firmware's texts for a module, without placeholders.
struct TModuleTexts {
    std::optional<std::string> serial;
    std::optional<std::string> part;
};

/// Returns the EEPROM of each module, or null. Module and EEPROM are matched by their texts: the serial
/// numbers are equal (firmware prints the four bytes in either order) and the part numbers do not differ; or
/// either serial number is missing and the part number is unique among the modules and among the EEPROMs. An
/// ambiguous match is dropped.
std::vector<const TSpdModule*> MatchSpdModules(const std::vector<TModuleTexts>& modules,
                                               const std::vector<TSpdModule>& eeproms);

}  // namespace NVORHOST
