// A record of the udev database, /run/udev/data/b8:1: what device rules found out about a device.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// The value of the line "E:KEY=value", as a part of `text`; the first such line counts. Absent without one.
std::optional<std::string_view> FindUdevProperty(std::string_view text, std::string_view key);

/// Undoes the "\xHH" escapes that rules put into *_ENC values and names of partitions; what is no such escape
/// stays as it is.
std::string DecodeUdevEscapes(std::string_view text);

}  // namespace NVORHOST
