// Parses properties of the flattened device tree, the files of /proc/device-tree.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Returns the texts of a string list ("compatible"), each terminated by a NUL, except perhaps the last one.
/// Empty texts are left out.
std::vector<std::string> ParseDeviceTreeStrings(std::string_view bytes);

/// Returns the first text of a string list ("model", "serial-number"); nullopt if there is none.
std::optional<std::string> ParseDeviceTreeString(std::string_view bytes);

}  // namespace NVORHOST
