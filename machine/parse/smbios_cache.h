// SMBIOS cache information (type 7): the caches of the processors.
#pragma once

#include "machine/parse/smbios_table.h"

#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

struct TSmbiosCache {
    std::optional<std::string> designation;  ///< 04h, such as "L1 Cache"
    std::optional<std::uint8_t> level;       ///< 05h bits 2:0, 1-based
    std::optional<bool> isEnabled;           ///< 05h bit 7, at boot
    /// 05h bits 9:8: 0 write-through, 1 write-back, 2 varies; absent for 3, unknown.
    std::optional<std::uint8_t> mode;
    std::optional<std::uint64_t> maxSizeKiB;      ///< 07h or 13h
    std::optional<std::uint64_t> installedKiB;    ///< 09h or 17h; 0 for a cache that is not installed
    std::optional<std::uint8_t> errorCorrection;  ///< 10h, an error correction type of the reference
    std::optional<std::uint8_t> kind;             ///< 11h: 3 instruction, 4 data, 5 unified, or other codes
    std::optional<std::uint8_t> associativity;    ///< 12h, a code of the reference
};

/// `structure` must be of type 7. A field past the structure's length is absent.
/// Source: DSP0134, 7.8.
TSmbiosCache ParseSmbiosCache(const TSmbiosStructure& structure);

}  // namespace NVORHOST
