// Parses SMBIOS TPM device structures (type 43).
#pragma once

#include "machine/parse/smbios_table.h"

#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

struct TSmbiosTpm {
    std::optional<std::string> vendor;  ///< 04h, up to 4 characters: "IFX"; absent if any is not printable
    std::optional<std::uint8_t> majorVersion;  ///< 08h, version of TPM, such as 2; absent for 0
    std::optional<std::uint8_t> minorVersion;  ///< 09h
    std::optional<std::string> description;    ///< 12h
};

/// `structure` must be of type 43. A field at or past its length is absent.
/// Source: DSP0134, 7.44.
TSmbiosTpm ParseSmbiosTpm(const TSmbiosStructure& structure);

}  // namespace NVORHOST
