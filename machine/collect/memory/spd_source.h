// The EEPROMs of the memory modules that the kernel shows, and which of them is on which module.
#pragma once

#include "machine/collect/frame/source_patterns.h"
#include "machine/parse/spd_eeprom.h"
#include "machine/system/system_files.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

inline constexpr std::array<TSourcePattern, 6> spdSources{
    "/sys/bus/i2c/drivers/ee1004",  "/sys/bus/i2c/drivers/ee1004/*/eeprom",
    "/sys/bus/i2c/drivers/spd5118", "/sys/bus/i2c/drivers/spd5118/*/eeprom",
    "/sys/bus/i2c/drivers/at24",    "/sys/bus/i2c/drivers/at24/*/eeprom",
};

/// Every EEPROM that a driver of memory modules' EEPROMs shows and that can be read as one.
std::vector<TSpdModule> ReadSpdModules(const ISystemFiles& files);

/// What the firmware tells of a module; placeholders are absent.
struct TModuleTexts {
    std::optional<std::string> serial;
    std::optional<std::string> part;
};

/// For each module the EEPROM on it, or null. Nothing but texts ties the two: the serial numbers are the same
/// (firmware prints the four bytes in either order) and the part numbers do not differ; or a module without a
/// serial number has a part number that one module and one EEPROM have and no other. An EEPROM that fits
/// several modules fits none.
std::vector<const TSpdModule*> MatchSpdModules(const std::vector<TModuleTexts>& modules,
                                               const std::vector<TSpdModule>& eeproms);

}  // namespace NVORHOST
