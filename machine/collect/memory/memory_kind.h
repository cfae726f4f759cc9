// Form factors and types of SMBIOS memory devices, and uses and error correction of memory arrays: their
// names and the corresponding CIM codes.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

/// A form factor, SMBIOS type 17, 0Eh.
struct TMemoryFormFactor {
    std::uint8_t code;
    std::string_view name;                           ///< empty for Other and Unknown
    std::uint16_t cimFormFactor;                     ///< CIM_PhysicalMemory.FormFactor
    std::optional<std::uint16_t> removalConditions;  ///< CIM_PhysicalComponent.RemovalConditions
};

/// A memory type, SMBIOS type 17, 12h.
struct TMemoryKind {
    std::uint8_t code;
    std::string_view name;        ///< empty for Other and Unknown
    std::uint16_t cimMemoryType;  ///< CIM_PhysicalMemory.MemoryType
};

/// Returns the row of a form factor; null for a code that DSP0134 does not list.
const TMemoryFormFactor* FindMemoryFormFactor(std::uint8_t code);

/// Returns the row of a memory type; null for a code that DSP0134 does not list.
const TMemoryKind* FindMemoryKind(std::uint8_t code);

/// Returns the use of a memory array, SMBIOS type 16, 05h: "System memory"; nullopt for other, unknown and
/// unlisted codes.
std::optional<std::string_view> FindMemoryArrayUse(std::uint8_t code);

/// Returns the error correction of a memory array, SMBIOS type 16, 06h: "Single-bit ECC"; nullopt for other,
/// unknown and unlisted codes.
std::optional<std::string_view> FindErrorCorrection(std::uint8_t code);

}  // namespace NVORHOST
