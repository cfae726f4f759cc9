// SMBIOS system slot structures (type 9), one for each slot, empty ones too.
#pragma once

#include "machine/parse/smbios_table.h"

#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

/// Codes are the reference's. Texts are the firmware's, placeholders included.
struct TSmbiosSlot {
    std::optional<std::string> designation;     ///< 04h
    std::optional<std::uint8_t> kind;           ///< 05h
    std::optional<std::uint8_t> dataWidth;      ///< 06h
    std::optional<std::uint8_t> usage;          ///< 07h
    std::optional<std::uint8_t> number;         ///< 09h, first byte of the slot's ID
    std::optional<bool> supportsHotPlug;        ///< 0Ch bit 1; absent when 0Bh says nothing is known
    std::optional<std::string> pciAddress;      ///< 0Dh, 0Fh, 10h as sysfs writes it; absent for all ones
    std::optional<std::uint8_t> physicalWidth;  ///< 14h behind the peer groups
};

/// `structure` must be of type 9. A field past the structure's length is absent.
/// Source: DSP0134, 7.10.
TSmbiosSlot ParseSmbiosSlot(const TSmbiosStructure& structure);

}  // namespace NVORHOST
