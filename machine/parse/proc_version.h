// Parses /proc/version: the kernel's version line.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Returns the release in "Linux version 6.1.0-13-amd64 (builder) (compiler) #1 SMP ...", which is also that
/// of uname; nullopt for any other text.
std::optional<std::string> ParseKernelRelease(std::string_view text);

}  // namespace NVORHOST
