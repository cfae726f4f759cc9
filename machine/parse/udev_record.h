// Parses a record of the udev database, such as /run/udev/data/b8:1: the results of the device rules for one
// device.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Returns the value of the first line "E:KEY=value" as a part of `text`; nullopt without one.
std::optional<std::string_view> FindUdevProperty(std::string_view text, std::string_view key);

/// Decodes the "\xHH" escapes of *_ENC values and partition names. Malformed escapes are kept.
std::string DecodeUdevEscapes(std::string_view text);

}  // namespace NVORHOST
