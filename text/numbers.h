// Parses numbers. A number is the whole token and in range, or it is absent.
#pragma once

#include "text/trim.h"

#include <charconv>
#include <concepts>
#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

/// Parses `text`, blanks around it aside, as a number in `base`; nullopt if it is malformed or out of range.
/// The only sign is "-", for signed types; there is no prefix.
template <std::integral T>
std::optional<T> ParseNumber(std::string_view text, int base = 10) {
    const std::string_view token = TrimBlanks(text);
    T number{};
    const auto end = token.data() + token.size();
    const auto result = std::from_chars(token.data(), end, number, base);
    if (result.ec != std::errc{} || result.ptr != end) {
        return std::nullopt;
    }
    return number;
}

/// Parses a hexadecimal number with or without "0x"; nullopt as for ParseNumber.
template <std::unsigned_integral T>
std::optional<T> ParseHexNumber(std::string_view text) {
    std::string_view token = TrimBlanks(text);
    if (token.starts_with("0x") || token.starts_with("0X")) {
        token.remove_prefix(2);
    }
    return ParseNumber<T>(token, 16);
}

/// Parses a decimal fraction without sign or exponent, such as "2299.992", and rounds it to the nearest
/// integer, halves up. Returns nullopt if it is malformed or the result is out of range.
std::optional<std::uint32_t> ParseRounded(std::string_view text);

}  // namespace NVORHOST
