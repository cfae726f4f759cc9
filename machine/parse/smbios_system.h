// SMBIOS structures that identify the machine: firmware (type 0), system (1), baseboard (2) and chassis (3).
#pragma once

#include "machine/parse/smbios_table.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Type 0.
struct TSmbiosFirmware {
    bool isVirtualMachine = false;  ///< 13h bit 4
};

/// Type 1. Texts are the firmware's, placeholders included.
struct TSmbiosSystem {
    std::optional<std::string> manufacturer;  ///< 04h
    std::optional<std::string> product;       ///< 05h
    std::optional<std::string> version;       ///< 06h
    std::optional<std::string> serial;        ///< 07h
    /// 08h in the canonical form, upper case. Absent when it is not set (all FFh) or not present (all 00h),
    /// and without a version, which the order of its bytes depends on.
    std::optional<std::string> uuid;
};

/// Type 2.
struct TSmbiosBoard {
    std::optional<std::string> manufacturer;  ///< 04h
    std::optional<std::string> product;       ///< 05h
    std::optional<std::string> version;       ///< 06h
    std::optional<std::string> serial;        ///< 07h
    std::optional<std::string> assetTag;      ///< 08h
    std::optional<std::uint8_t> features;     ///< 09h, bits
    std::optional<std::string> location;      ///< 0Ah, within the chassis
    std::optional<std::uint8_t> kind;         ///< 0Dh, a board type of the reference
};

/// Type 3.
struct TSmbiosChassis {
    std::optional<std::uint8_t> kind;          ///< 05h bits 6:0, an enclosure type of the reference
    std::optional<std::string> serial;         ///< 07h
    std::optional<std::uint8_t> bootUpState;   ///< 09h
    std::optional<std::uint8_t> powerState;    ///< 0Ah
    std::optional<std::uint8_t> thermalState;  ///< 0Bh
};

/// `structure` must be of the type named. A field past the structure's length is absent.
/// Source: DSP0134, 7.1 to 7.4.
TSmbiosFirmware ParseSmbiosFirmware(const TSmbiosStructure& structure);
TSmbiosSystem ParseSmbiosSystem(const TSmbiosStructure& structure, std::optional<TSmbiosVersion> version);
TSmbiosBoard ParseSmbiosBoard(const TSmbiosStructure& structure);
TSmbiosChassis ParseSmbiosChassis(const TSmbiosStructure& structure);

/// The canonical text, upper case, of the 16 bytes of a UUID. From version 2.6 on the first three fields are
/// little-endian; before, the bytes stand in the order of the text. Absent for all 00h, all FFh and another
/// size.
std::optional<std::string> FormatSmbiosUuid(std::string_view bytes, TSmbiosVersion version);

/// True for UUID texts that firmware vendors ship on many machines, and for all zeros and all Fs.
bool IsPlaceholderUuid(std::string_view uuid);

/// The name of an enclosure type, such as "Rack Mount Chassis". Empty for Other, Unknown and codes the
/// reference does not list.
std::string_view GetChassisKindName(std::uint8_t kind);

}  // namespace NVORHOST
