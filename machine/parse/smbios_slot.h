// Parses SMBIOS system slot structures (type 9), one for each slot, including empty ones.
#pragma once

#include "machine/parse/smbios_table.h"

#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

/// Codes are those of the reference; texts are unchanged, placeholders included.
struct TSmbiosSlot {
    std::optional<std::string> designation;     ///< 04h
    std::optional<std::uint8_t> kind;           ///< 05h
    std::optional<std::uint8_t> dataWidth;      ///< 06h
    std::optional<std::uint8_t> usage;          ///< 07h
    std::optional<std::uint8_t> number;         ///< 09h, first byte of the slot ID
    std::optional<bool> supportsHotPlug;        ///< 0Ch bit 1; absent if 0Bh marks it as unknown
    std::optional<std::string> pciAddress;      ///< 0Dh, 0Fh, 10h in the form of sysfs; absent for all ones
    std::optional<std::uint8_t> physicalWidth;  ///< 14h plus the size of the peer groups
};

/// `structure` must be of type 9. A field at or past its length is absent.
/// Source: DSP0134, 7.10.
TSmbiosSlot ParseSmbiosSlot(const TSmbiosStructure& structure);

}  // namespace NVORHOST
