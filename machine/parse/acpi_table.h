// The header of an ACPI table, which names the maker of the table.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

struct TAcpiTableOrigin {
    std::string oemId;       ///< 6 characters, with their padding
    std::string oemTableId;  ///< 8 characters, with their padding
};

/// Reads the names in a table header; nullopt if `bytes` is shorter than the 36 bytes of the header.
/// Source: ACPI, 5.2.6, system description table header: OEM id at 10, OEM table id at 16.
std::optional<TAcpiTableOrigin> ParseAcpiTableOrigin(std::string_view bytes);

}  // namespace NVORHOST
