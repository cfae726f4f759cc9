// The numbers that identify a model of PCI functions, and their text in the attribute `modalias`.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// A subsystem vendor of 0 means that the function has none.
struct TPciNumbers {
    std::uint16_t vendorId = 0;
    std::uint16_t deviceId = 0;
    std::uint16_t subsystemVendorId = 0;
    std::uint16_t subsystemId = 0;
    std::uint8_t baseClass = 0;
    std::uint8_t subclass = 0;
    std::uint8_t programmingInterface = 0;
};

/// Returns the text of the attribute `modalias`: "pci:v00008086d0000100Esv00008086sd0000001Ebc02sc00i00".
std::string MakePciModalias(const TPciNumbers& numbers);

/// Parses the attribute `modalias`, ignoring blanks around it; nullopt if a part is missing, malformed or out
/// of range.
std::optional<TPciNumbers> ParsePciModalias(std::string_view text);

}  // namespace NVORHOST
