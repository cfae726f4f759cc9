// The serial presence detect EEPROM of a memory module: what its maker wrote into it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// The week that a module was made in.
struct TManufactureWeek {
    std::uint16_t year = 0;
    std::uint8_t week = 0;

    bool operator==(const TManufactureWeek&) const = default;
};

struct TSpdModule {
    std::optional<std::string> serial;     ///< 8 hexadecimal digits, upper case; absent for all 0 and all F
    std::optional<std::string> part;       ///< trailing blanks off; absent when it is not printable text
    std::optional<TManufactureWeek> made;  ///< absent when the bytes are no decimal digits, or no week
};

/// Shape:  the EEPROM from its start; 128 bytes (DDR, DDR2), 256 (DDR3), 512 (DDR4) or 1024 (DDR5).
/// Absent: for a kind of memory (byte 2) that is not listed, so for EEPROMs of another purpose, and for bytes
///         that end before the maker's fields do.
/// Source: JEDEC standard 21-C, annexes of serial presence detects; JESD400-5.
std::optional<TSpdModule> ParseSpdEeprom(std::string_view bytes);

/// Where the 4 bytes of the serial number stand. Absent as above.
std::optional<std::size_t> FindSpdSerial(std::string_view bytes);

}  // namespace NVORHOST
