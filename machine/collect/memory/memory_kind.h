// Code lists of SMBIOS memory devices: their names, and the codes that CIM has for them.
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

/// A memory type, 12h.
struct TMemoryKind {
    std::uint8_t code;
    std::string_view name;        ///< empty for Other and Unknown
    std::uint16_t cimMemoryType;  ///< CIM_PhysicalMemory.MemoryType
};

/// Null for codes that the reference does not list.
const TMemoryFormFactor* FindMemoryFormFactor(std::uint8_t code);
const TMemoryKind* FindMemoryKind(std::uint8_t code);

}  // namespace NVORHOST
