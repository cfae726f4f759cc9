// The uevent attribute of sysfs devices.
#pragma once

#include <optional>
#include <string_view>

namespace NVORHOST {

/// The value of the line "KEY=value", as a part of `text`; the first such line counts. Absent without one.
std::optional<std::string_view> FindUeventValue(std::string_view text, std::string_view key);

}  // namespace NVORHOST
