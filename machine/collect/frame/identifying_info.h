// The maker, model and serial number of a logical device, which CIM has as two parallel arrays.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

/// CIM_LogicalDevice.OtherIdentifyingInfo and IdentifyingDescriptions, both absent or of the same length.
struct TIdentifyingInfo {
    std::optional<std::vector<std::string>> values;
    std::optional<std::vector<std::string>> descriptions;

    /// Adds `value` under `description`; does nothing if it is absent.
    void Add(std::string description, const std::optional<std::string>& value);
};

}  // namespace NVORHOST
