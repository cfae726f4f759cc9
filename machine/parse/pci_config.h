// Parses the configuration space of a PCI function into its registers, by header type.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Layouts of the configuration header, from register 0Eh, bits 6:0.
enum class EPciHeader : std::uint8_t { device = 0, bridge = 1, cardBus = 2 };

/// The registers as read; the comments give their numbers. A member that the header type lacks is absent.
struct TPciConfig {
    std::uint16_t vendorId = 0;             // 00
    std::uint16_t deviceId = 0;             // 02
    std::uint16_t status = 0;               // 06
    std::uint8_t programmingInterface = 0;  // 09
    std::uint8_t subclass = 0;              // 0A
    std::uint8_t baseClass = 0;             // 0B
    std::uint8_t cacheLineSize = 0;         // 0C, doublewords
    std::uint8_t latencyTimer = 0;          // 0D, PCI clocks
    EPciHeader header = EPciHeader::device;
    std::uint8_t selfTest = 0;      // 0F
    std::uint8_t interruptPin = 0;  // 3D
    /// Base address registers of the header, including zeros: 6, 2 or 1 by header type.
    std::vector<std::uint32_t> baseAddresses;
    std::optional<std::uint32_t> expansionRom;       // 30, header 1: 38
    std::optional<std::uint8_t> minGrant;            // 3E, header 0
    std::optional<std::uint8_t> maxLatency;          // 3F, header 0
    std::optional<std::uint16_t> subsystemVendorId;  // 2C, header 1: capability 0Dh, header 2: 40
    std::optional<std::uint16_t> subsystemId;        // 2E, header 1: capability 0Dh, header 2: 42
    std::optional<std::uint8_t> primaryBus;          // 18, headers 1 and 2
    std::optional<std::uint8_t> secondaryBus;        // 19
    std::optional<std::uint8_t> subordinateBus;      // 1A
    std::optional<std::uint8_t> ioBase;              // 1C, header 1
    std::optional<std::uint8_t> ioLimit;             // 1D, header 1
    std::optional<std::uint16_t> memoryBase;         // 20, header 1
    std::optional<std::uint16_t> memoryLimit;        // 22, header 1
    /// Bits 7:4 of the flags of the PCI Express capability (10h); absent if `bytes` has no such capability.
    std::optional<std::uint8_t> expressPortType;

    /// Status bit 4.
    bool HasCapabilities() const { return (status & 0x0010) != 0; }
};

/// Size of the header of every type, which every user may read.
inline constexpr std::size_t pciHeaderBytes = 64;
/// Size of the header and the capability list, which root may read.
inline constexpr std::size_t pciConfigBytes = 256;

/// Shape:  64 bytes or more from the start of the space. Capabilities are followed as far as the bytes reach.
/// Absent: nullopt for fewer bytes, vendor FFFFh (no function at the address) and header types above 2.
/// Source: PCI Local Bus 3.0, chapter 6; PCI-to-PCI Bridge Architecture 1.2, 3.2; PC Card Standard for
///          CardBus bridges.
std::optional<TPciConfig> ParsePciConfig(std::string_view bytes);

}  // namespace NVORHOST
