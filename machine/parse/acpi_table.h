// The header that every ACPI table starts with: who made it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

struct TAcpiTableOrigin {
    std::string oemId;       ///< 6 characters, padding included
    std::string oemTableId;  ///< 8 characters, padding included
};

/// Absent when `bytes` is shorter than the 36 bytes of the header.
/// Source: ACPI, 5.2.6, system description table header: OEM id at 10, OEM table id at 16.
std::optional<TAcpiTableOrigin> ParseAcpiTableOrigin(std::string_view bytes);

}  // namespace NVORHOST
