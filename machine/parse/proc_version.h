// /proc/version: the kernel's own line about itself.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// The release in "Linux version 6.1.0-13-amd64 (builder) (compiler) #1 SMP ...", as uname gives it. Absent
/// for any other text.
std::optional<std::string> ParseKernelRelease(std::string_view text);

}  // namespace NVORHOST
