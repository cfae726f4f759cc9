// Properties of the flattened device tree, as /proc/device-tree shows them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// A string list ("compatible"): texts that each end with a NUL; a last one without it counts too. Empty
/// texts are left out.
std::vector<std::string> ParseDeviceTreeStrings(std::string_view bytes);

/// The first text of such a list ("model", "serial-number"); absent when there is none.
std::optional<std::string> ParseDeviceTreeString(std::string_view bytes);

}  // namespace NVORHOST
