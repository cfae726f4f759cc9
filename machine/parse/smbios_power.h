// SMBIOS structures of power: portable batteries (type 22) and power supplies (type 39).
#pragma once

#include "machine/parse/smbios_table.h"

#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

/// Type 22. Texts are the firmware's, placeholders included.
struct TSmbiosBattery {
    std::optional<std::string> location;      ///< 04h
    std::optional<std::string> manufacturer;  ///< 05h
    std::optional<std::string> serial;        ///< 07h, or the number at 10h in hexadecimal digits
    std::optional<std::string> name;          ///< 08h
    std::optional<std::uint8_t> chemistry;    ///< 09h, a code of the reference
    std::optional<std::uint32_t> designCapacityMilliwattHours;  ///< 0Ah times 15h; absent for 0
    std::optional<std::uint16_t> designVoltageMillivolts;       ///< 0Ch; absent for 0
};

/// Type 39. Texts are the firmware's, placeholders included.
struct TSmbiosPowerSupply {
    std::optional<std::string> location;         ///< 05h
    std::optional<std::string> name;             ///< 06h
    std::optional<std::string> manufacturer;     ///< 07h
    std::optional<std::string> serial;           ///< 08h
    std::optional<std::string> assetTag;         ///< 09h
    std::optional<std::string> partNumber;       ///< 0Ah
    std::optional<std::string> revision;         ///< 0Bh
    std::optional<std::uint16_t> maxPowerWatts;  ///< 0Ch; absent for 8000h
    std::optional<bool> isHotReplaceable;        ///< 0Eh bit 0
    std::optional<bool> isPresent;               ///< 0Eh bit 1
    std::optional<bool> isUnplugged;             ///< 0Eh bit 2
    std::optional<std::uint8_t> status;          ///< 0Eh bits 9:7, a status of the reference
    std::optional<std::uint8_t> kind;            ///< 0Eh bits 13:10, a type of the reference
};

/// `structure` must be of the type named. A field past the structure's length is absent.
/// Source: DSP0134, 7.23 and 7.40.
TSmbiosBattery ParseSmbiosBattery(const TSmbiosStructure& structure);
TSmbiosPowerSupply ParseSmbiosPowerSupply(const TSmbiosStructure& structure);

}  // namespace NVORHOST
