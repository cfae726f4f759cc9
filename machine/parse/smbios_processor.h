// Parses SMBIOS processor structures (type 4), one for each socket.
#pragma once

#include "machine/parse/smbios_table.h"

#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

/// Texts are unchanged, placeholders included.
struct TSmbiosProcessor {
    std::optional<std::string> socket;             ///< 04h
    std::optional<std::uint8_t> kind;              ///< 05h; 3 is a central processor
    std::optional<std::uint16_t> family;           ///< 06h, or 28h if 06h refers to it; absent for 0, FFh
    std::optional<std::string> manufacturer;       ///< 07h
    std::optional<std::string> version;            ///< 10h
    std::optional<std::uint16_t> maxSpeedMHz;      ///< 14h; absent for 0, unknown
    std::optional<std::uint16_t> currentSpeedMHz;  ///< 16h; absent for 0, unknown
    std::optional<std::uint8_t> status;            ///< 18h
    std::optional<std::uint8_t> upgrade;           ///< 19h, a kind of socket of the reference
    std::optional<std::string> serial;             ///< 20h
    std::optional<std::uint16_t> cores;            ///< 23h, or 2Ah when 23h is FFh; absent for 0, unknown
    std::optional<std::uint16_t> enabledCores;     ///< 24h, or 2Ch when 24h is FFh; absent for 0, unknown
    std::optional<std::uint16_t> threads;          ///< 25h, or 2Eh when 25h is FFh; absent for 0, unknown
    std::optional<std::uint16_t> characteristics;  ///< 26h
    std::optional<std::string> socketKind;         ///< 32h, name of the kind of socket

    bool IsCentral() const { return kind == 3; }
    /// Returns bit 6 of the status.
    bool IsPopulated() const { return status && (*status & 0x40) != 0; }
    /// Returns bit 2 of the characteristics.
    bool Is64BitCapable() const { return characteristics && (*characteristics & 0x04) != 0; }
};

/// `structure` must be of type 4. A field at or past its length is absent.
/// Source: DSP0134, 7.5.
TSmbiosProcessor ParseSmbiosProcessor(const TSmbiosStructure& structure);

}  // namespace NVORHOST
