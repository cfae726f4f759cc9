#include "machine/parse/acpi_table.h"

namespace NVORHOST {

std::optional<TAcpiTableOrigin> ParseAcpiTableOrigin(std::string_view bytes) {
    constexpr std::size_t headerSize = 36;
    if (bytes.size() < headerSize) {
        return std::nullopt;
    }
    return TAcpiTableOrigin{std::string(bytes.substr(10, 6)), std::string(bytes.substr(16, 8))};
}

}  // namespace NVORHOST
