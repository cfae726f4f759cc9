#include "machine/collect/memory/spd_source.h"

#include "text/ascii.h"
#include "text/lines.h"
#include "text/trim.h"

#include <algorithm>
#include <string_view>

namespace NVORHOST {
namespace {

// Drivers for the EEPROMs of DDR4 modules, of DDR5 modules, and of any kind, including older modules.
constexpr std::string_view driverFolders[] = {
    "/sys/bus/i2c/drivers/ee1004",
    "/sys/bus/i2c/drivers/spd5118",
    "/sys/bus/i2c/drivers/at24",
};

constexpr std::size_t maxEepromBytes = 1024;

// True for "1-0050" to "1-0057": bus and address. Other addresses have EEPROMs of other kinds, and the folder
// of a driver has attributes as well.
bool IsModuleAddress(std::string_view name) {
    const auto [bus, address] = SplitAt(name, '-');
    return address.size() == 4 && address.starts_with("005") && address[3] >= '0' && address[3] <= '7';
}

// Returns "4D3C2B1A" for "1A2B3C4D".
std::string ReverseBytes(const std::string& digits) {
    std::string reversed;
    for (std::size_t i = digits.size(); i >= 2; i -= 2) {
        reversed += digits.substr(i - 2, 2);
    }
    return reversed;
}

bool IsSameSerial(const std::string& firmware, const std::string& eeprom) {
    const std::string digits = ToUpperCase(TrimBlanks(firmware));
    return digits == eeprom || digits == ReverseBytes(eeprom);
}

bool IsSamePart(const std::string& firmware, const std::string& eeprom) {
    return EqualIgnoringCase(TrimBlanks(firmware), TrimBlanks(eeprom));
}

bool FitsBySerial(const TModuleTexts& module, const TSpdModule& eeprom) {
    if (!module.serial || !eeprom.serial || !IsSameSerial(*module.serial, *eeprom.serial)) {
        return false;
    }
    return !module.part || !eeprom.part || IsSamePart(*module.part, *eeprom.part);
}

bool FitsByPart(const TModuleTexts& module, const TSpdModule& eeprom) {
    const bool haveSerials = module.serial && eeprom.serial;
    return !haveSerials && module.part && eeprom.part && IsSamePart(*module.part, *eeprom.part);
}

// Returns the only element that satisfies `fits`; the end of the range if there is none or several.
template <typename TRange, typename TFits>
auto FindOnly(const TRange& range, TFits fits) {
    const auto first = std::find_if(range.begin(), range.end(), fits);
    if (first == range.end() || std::find_if(first + 1, range.end(), fits) != range.end()) {
        return range.end();
    }
    return first;
}

}  // namespace

std::vector<TSpdModule> ReadSpdModules(const ISystemFiles& files) {
    std::vector<TSpdModule> eeproms;
    for (const std::string_view driver : driverFolders) {
        for (const std::string& name : files.List(driver).value) {
            if (!IsModuleAddress(name)) {
                continue;
            }
            const std::string path = std::string(driver) + "/" + name + "/eeprom";
            if (auto eeprom = ParseSpdEeprom(files.ReadBytes(path, maxEepromBytes).value)) {
                eeproms.push_back(std::move(*eeprom));
            }
        }
    }
    return eeproms;
}

std::vector<const TSpdModule*> MatchSpdModules(const std::vector<TModuleTexts>& modules,
                                               const std::vector<TSpdModule>& eeproms) {
    std::vector<const TSpdModule*> matches(modules.size());
    const auto match = [&](const auto& fits) {
        for (std::size_t i = 0; i < modules.size(); ++i) {
            const auto eeprom =
                FindOnly(eeproms, [&](const TSpdModule& candidate) { return fits(modules[i], candidate); });
            if (matches[i] != nullptr || eeprom == eeproms.end()) {
                continue;
            }
            const auto module =
                FindOnly(modules, [&](const TModuleTexts& candidate) { return fits(candidate, *eeprom); });
            if (module != modules.end()) {
                matches[i] = &*eeprom;
            }
        }
    };
    match(FitsBySerial);
    match(FitsByPart);
    return matches;
}

}  // namespace NVORHOST
