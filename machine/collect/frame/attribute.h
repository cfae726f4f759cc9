// Small files that hold one value, as sysfs has them.
#pragma once

#include "machine/system/system_files.h"
#include "text/numbers.h"

#include <concepts>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// The text of a file, blanks and line ends around it off. Absent when it cannot be read or is empty.
std::optional<std::string> ReadAttribute(const ISystemFiles& files, std::string_view path);

/// The whole token as a decimal number in range, else absent.
template <std::integral T>
std::optional<T> ReadNumber(const ISystemFiles& files, std::string_view path) {
    const auto text = ReadAttribute(files, path);
    return text ? ParseNumber<T>(*text) : std::nullopt;
}

/// The same for hexadecimal numbers with or without "0x".
template <std::unsigned_integral T>
std::optional<T> ReadHexNumber(const ISystemFiles& files, std::string_view path) {
    const auto text = ReadAttribute(files, path);
    return text ? ParseHexNumber<T>(*text) : std::nullopt;
}

/// The last name in the target of a link, such as the driver of ".../driver". Absent when it is no link.
std::optional<std::string> ReadLinkedName(const ISystemFiles& files, std::string_view path);

}  // namespace NVORHOST
