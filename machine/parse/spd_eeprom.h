// Parses the serial presence detect EEPROM of a memory module, which the maker of the module has written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// The week in which a module was made.
struct TManufactureWeek {
    std::uint16_t year = 0;
    std::uint8_t week = 0;

    bool operator==(const TManufactureWeek&) const = default;
};

struct TSpdModule {
    std::optional<std::string> serial;     ///< 8 hexadecimal digits, upper case; absent for all 0 or all F
    std::optional<std::string> part;       ///< without padding; absent if it is not printable text
    std::optional<TManufactureWeek> made;  ///< absent if the bytes are not decimal digits or not a week
};

/// Shape:  the EEPROM from its start; 128 bytes (DDR, DDR2), 256 (DDR3), 512 (DDR4) or 1024 (DDR5).
/// Absent: nullopt for an unlisted kind of memory (byte 2), which includes EEPROMs for other purposes, and
///          for bytes that end before the fields of the maker.
/// Source: JEDEC standard 21-C, annexes of serial presence detects; JESD400-5.
std::optional<TSpdModule> ParseSpdEeprom(std::string_view bytes);

/// Returns the offset of the 4 bytes of the serial number; nullopt for an unlisted kind of memory and for
/// bytes that end before it.
std::optional<std::size_t> FindSpdSerial(std::string_view bytes);

}  // namespace NVORHOST
