// Numbers in the kernel's texts. A number is the whole token and in range, or it is absent.
#pragma once

#include <charconv>
#include <concepts>
#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

/// `text` without the blanks, tabs and line ends around it.
std::string_view TrimBlanks(std::string_view text);

/// The number that `text` is, blanks around it aside, in `base`. No sign but "-" for signed types, no prefix.
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

/// A hexadecimal number with or without "0x".
template <std::unsigned_integral T>
std::optional<T> ParseHexNumber(std::string_view text) {
    std::string_view token = TrimBlanks(text);
    if (token.starts_with("0x") || token.starts_with("0X")) {
        token.remove_prefix(2);
    }
    return ParseNumber<T>(token, 16);
}

/// A decimal fraction without sign or exponent, as in "2299.992", rounded to the nearest integer, halves up.
std::optional<std::uint32_t> ParseRounded(std::string_view text);

}  // namespace NVORHOST
