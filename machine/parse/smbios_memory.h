// SMBIOS structures of the memory: arrays (type 16), devices in sockets (17) and the addresses of both (19,
// 20).
#pragma once

#include "machine/parse/smbios_table.h"

#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

/// Type 16. Codes are those of the reference.
struct TSmbiosMemoryArray {
    std::uint16_t handle = 0;
    std::optional<std::uint8_t> location;         ///< 04h
    std::optional<std::uint8_t> use;              ///< 05h
    std::optional<std::uint8_t> errorCorrection;  ///< 06h
    /// Largest memory of all slots together: 07h, or 0Fh if 07h refers to it; absent if unknown.
    std::optional<std::uint64_t> maxCapacityBytes;
    std::optional<std::uint16_t> slotCount;  ///< 0Dh
};

/// Type 17. Codes are those of the reference; texts are unchanged, placeholders included.
struct TSmbiosMemoryDevice {
    std::uint16_t handle = 0;
    std::optional<std::uint16_t> arrayHandle;     ///< 04h
    std::optional<std::uint16_t> totalWidthBits;  ///< 08h; absent for FFFFh, unknown
    std::optional<std::uint16_t> dataWidthBits;   ///< 0Ah; absent for FFFFh, unknown
    bool isPopulated = false;                     ///< 0Ch is present and not 0
    std::optional<std::uint64_t> capacityBytes;   ///< 0Ch, or 1Ch if 0Ch refers to it; absent if unknown
    std::optional<std::uint8_t> formFactor;       ///< 0Eh
    std::optional<std::string> locator;           ///< 10h
    std::optional<std::string> bank;              ///< 11h
    std::optional<std::uint8_t> kind;             ///< 12h, the memory type
    std::optional<std::uint16_t> detail;          ///< 13h, bits
    /// Megatransfers per second: 15h, or 54h if 15h refers to it; absent if unknown.
    std::optional<std::uint32_t> speed;
    std::optional<std::string> manufacturer;  ///< 17h
    std::optional<std::string> serial;        ///< 18h
    std::optional<std::string> part;          ///< 1Ah
    std::optional<std::uint8_t> rank;         ///< 1Bh, bits 3:0; absent for 0, unknown
    /// Megatransfers per second: 20h, or 58h if 20h refers to it; absent if unknown.
    std::optional<std::uint32_t> configuredSpeed;
    std::optional<std::uint16_t> configuredMillivolts;  ///< 26h; absent for 0, unknown
};

/// A range of byte addresses; `last` is inclusive.
struct TAddressRange {
    std::uint64_t first = 0;
    std::uint64_t last = 0;

    bool operator==(const TAddressRange&) const = default;
};

/// Type 19.
struct TSmbiosArrayAddress {
    std::optional<std::uint16_t> arrayHandle;  ///< 0Ch
    /// 04h and 08h, or 0Fh and 17h if those refer to them. Absent if both are 0, which firmware writes for an
    /// array without memory, if the end is before the start, and if the extended fields are missing.
    std::optional<TAddressRange> range;
};

/// Type 20.
struct TSmbiosDeviceAddress {
    std::optional<std::uint16_t> deviceHandle;  ///< 0Ch
    std::optional<std::uint8_t> rowPosition;    ///< 10h, 1-based; absent for 0, reserved, and FFh, unknown
    std::optional<std::uint8_t> interleavePosition;  ///< 11h, 0 if not interleaved; absent for FFh, unknown
};

/// `structure` must have the type that the function names. A field at or past its length is absent.
/// Source: DSP0134, 7.17, 7.18, 7.20 and 7.21.
TSmbiosMemoryArray ParseSmbiosMemoryArray(const TSmbiosStructure& structure);
TSmbiosMemoryDevice ParseSmbiosMemoryDevice(const TSmbiosStructure& structure);
TSmbiosArrayAddress ParseSmbiosArrayAddress(const TSmbiosStructure& structure);
TSmbiosDeviceAddress ParseSmbiosDeviceAddress(const TSmbiosStructure& structure);

}  // namespace NVORHOST
