// Reads files that hold one value each, as in sysfs.
#pragma once

#include "machine/system/system_files.h"
#include "text/numbers.h"

#include <concepts>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Returns the text of a file without blanks and line ends around it; nullopt if the file cannot be read or
/// is blank.
std::optional<std::string> ReadAttribute(const ISystemFiles& files, std::string_view path);

/// Reads a decimal number; nullopt if the text is not one number in range.
template <std::integral T>
std::optional<T> ReadNumber(const ISystemFiles& files, std::string_view path) {
    const auto text = ReadAttribute(files, path);
    return text ? ParseNumber<T>(*text) : std::nullopt;
}

/// Reads a hexadecimal number with or without "0x"; nullopt if the text is not one number in range.
template <std::unsigned_integral T>
std::optional<T> ReadHexNumber(const ISystemFiles& files, std::string_view path) {
    const auto text = ReadAttribute(files, path);
    return text ? ParseHexNumber<T>(*text) : std::nullopt;
}

/// Returns the last name in the target of a link: "ahci" for ".../driver". Returns nullopt if `path` is not a
/// link.
std::optional<std::string> ReadLinkedName(const ISystemFiles& files, std::string_view path);

}  // namespace NVORHOST
