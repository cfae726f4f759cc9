// Parses the SMBIOS structures that identify the machine: firmware (type 0), system (1), baseboard (2) and
// chassis (3).
#pragma once

#include "machine/parse/smbios_table.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Type 0. Texts are the firmware's, placeholders included.
struct TSmbiosFirmware {
    std::optional<std::string> vendor;             ///< 04h
    std::optional<std::string> version;            ///< 05h
    std::optional<std::string> releaseDate;        ///< 08h; ParseFirmwareDate reads it
    bool isVirtualMachine = false;                 ///< 13h bit 4
    std::optional<std::string> release;            ///< 14h and 15h, "5.17"; absent if either is FFh
    std::optional<std::string> controllerRelease;  ///< 16h and 17h, of the embedded controller; as `release`
};

struct TFirmwareDate {
    std::uint16_t year = 0;
    std::uint8_t month = 0, day = 0;

    auto operator<=>(const TFirmwareDate&) const = default;
};

/// Type 1. Texts are unchanged, placeholders included.
struct TSmbiosSystem {
    std::optional<std::string> manufacturer;  ///< 04h
    std::optional<std::string> product;       ///< 05h
    std::optional<std::string> version;       ///< 06h
    std::optional<std::string> serial;        ///< 07h
    /// 08h in canonical form, upper case. Absent if it is a placeholder such as all 00h or all FFh, and if
    /// the version is unknown, which determines the byte order.
    std::optional<std::string> uuid;
};

/// Type 2.
struct TSmbiosBoard {
    std::optional<std::string> manufacturer;  ///< 04h
    std::optional<std::string> product;       ///< 05h
    std::optional<std::string> version;       ///< 06h
    std::optional<std::string> serial;        ///< 07h
    std::optional<std::string> assetTag;      ///< 08h
    std::optional<std::uint8_t> features;     ///< 09h, flags
    std::optional<std::string> location;      ///< 0Ah, position within the chassis
    std::optional<std::uint8_t> kind;         ///< 0Dh, a board type of the reference
};

/// Type 3.
struct TSmbiosChassis {
    std::optional<std::string> manufacturer;   ///< 04h
    std::optional<std::uint8_t> kind;          ///< 05h bits 6:0, an enclosure type of the reference
    bool hasLock = false;                      ///< 05h bit 7; false if there is none or if that is unknown
    std::optional<std::string> version;        ///< 06h
    std::optional<std::string> serial;         ///< 07h
    std::optional<std::string> assetTag;       ///< 08h
    std::optional<std::uint8_t> bootUpState;   ///< 09h
    std::optional<std::uint8_t> powerState;    ///< 0Ah
    std::optional<std::uint8_t> thermalState;  ///< 0Bh
    std::optional<std::uint8_t> rackUnits;     ///< 11h, height of 1.75 inches each; absent for 0
    std::optional<std::uint8_t> powerCords;    ///< 12h; absent for 0
    std::optional<std::string> sku;            ///< after the contained elements of 13h and 14h
};

/// `structure` must have the type that the function names. A field at or past its length is absent.
/// Source: DSP0134, 7.1 to 7.4.
TSmbiosFirmware ParseSmbiosFirmware(const TSmbiosStructure& structure);
TSmbiosSystem ParseSmbiosSystem(const TSmbiosStructure& structure, std::optional<TSmbiosVersion> version);
TSmbiosBoard ParseSmbiosBoard(const TSmbiosStructure& structure);
TSmbiosChassis ParseSmbiosChassis(const TSmbiosStructure& structure);

/// Shape:  "MM/DD/YYYY", or "MM/DD/YY" for the years from 1980 to 1999.
/// Absent: another form, and a day that the calendar does not have.
/// Source: DSP0134, 7.1, offset 08h; /sys/class/dmi/id/bios_date has the same text.
std::optional<TFirmwareDate> ParseFirmwareDate(std::string_view text);

/// Returns the canonical text, upper case, of the 16 bytes of a UUID; nullopt for placeholders and other
/// sizes. From version 2.6 on, the first three fields are little-endian; before, the bytes are in the order
/// of the text.
std::optional<std::string> FormatSmbiosUuid(std::string_view bytes, TSmbiosVersion version);

/// True for UUIDs that firmware vendors ship on many machines, in any case, including all zeros and all Fs.
bool IsPlaceholderUuid(std::string_view uuid);

/// Returns the name of an enclosure type, such as "Rack Mount Chassis"; nullopt for Other, Unknown and codes
/// that are not in the reference.
std::optional<std::string_view> FindChassisKindName(std::uint8_t kind);

}  // namespace NVORHOST
