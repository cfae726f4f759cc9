// Parses the uevent attribute of devices in sysfs.
#pragma once

#include <optional>
#include <string_view>

namespace NVORHOST {

/// Returns the value of the first line "KEY=value" as a part of `text`; nullopt without one.
std::optional<std::string_view> FindUeventValue(std::string_view text, std::string_view key);

}  // namespace NVORHOST
