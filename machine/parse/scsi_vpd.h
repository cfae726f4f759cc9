// Parses the vital product data of SCSI disks, and of ATA disks, for which the kernel makes it up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Size of the header of a page, which precedes its body.
inline constexpr std::size_t vpdHeaderBytes = 4;

/// Returns the serial number of page 80h without blanks around it; nullopt for another page, a truncated one
/// and an empty serial number.
/// Source: SPC-4, 7.8.15.
std::optional<std::string> ParseVpdSerial(std::string_view page);

/// A designator of page 83h.
struct TVpdDesignator {
    bool isBinary = false;  ///< code set 1; ASCII or UTF-8 otherwise
    std::uint8_t type = 0;
    std::size_t offset = 0;  ///< of `bytes` in the body
    std::string_view bytes;  ///< part of the body
};

inline constexpr std::uint8_t vendorSpecificDesignator = 0;
inline constexpr std::uint8_t t10VendorDesignator = 1;

/// Returns the designators in the body of page 83h, the bytes after its header. A truncated designator ends
/// the list.
/// Source: SPC-4, 7.8.6.
std::vector<TVpdDesignator> ParseVpdDesignators(std::string_view body);

/// Returns the whole model name of an ATA disk from the T10 designator that the kernel puts into page 83h:
/// the vendor "ATA     ", 40 characters of model and 20 of serial number. The attribute `model` of sysfs has
/// only its first 16 characters. Returns nullopt for any other page.
/// Source: SPC-4, 7.8.6; SAT-3, 10.4.4.
std::optional<std::string> ParseVpdAtaModel(std::string_view page);

/// The medium of a disk, by page B1h.
struct TVpdRotation {
    bool isSolidState = false;
    std::optional<std::uint32_t> rotationsPerMinute;  ///< absent for a solid-state medium
};

/// Returns the medium rotation rate of page B1h, block device characteristics; nullopt for another page, a
/// truncated one, an unreported rate and a reserved one. Source: SBC-3, 6.5.2.
std::optional<TVpdRotation> ParseVpdRotation(std::string_view page);

}  // namespace NVORHOST
