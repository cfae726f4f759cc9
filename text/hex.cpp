#include "text/hex.h"

#include "text/ascii.h"

#include <algorithm>
#include <bit>

namespace NVORHOST {
namespace {

constexpr std::string_view lowerDigits = "0123456789abcdef";
constexpr std::string_view upperDigits = "0123456789ABCDEF";

int ValueOf(char digit) {
    return IsDigit(digit) ? digit - '0' : ToLower(digit) - 'a' + 10;
}

}  // namespace

std::string ToHexDigits(std::uint64_t number, int digitCount, EHexCase letterCase) {
    const std::string_view digits = letterCase == EHexCase::upper ? upperDigits : lowerDigits;
    std::string text(static_cast<std::size_t>(digitCount), '0');
    for (auto place = text.rbegin(); place != text.rend() && number != 0; ++place, number >>= 4U) {
        *place = digits[number & 0x0FU];
    }
    return text;
}

std::string FormatHex(std::uint64_t number, int minimumDigits) {
    constexpr int bitsOfDigit = 4;
    const int needed = (static_cast<int>(std::bit_width(number)) + bitsOfDigit - 1) / bitsOfDigit;
    return "0x" + ToHexDigits(number, std::max(needed, minimumDigits));
}

std::string ToHex(std::string_view bytes, EHexCase letterCase) {
    std::string text;
    text.reserve(2 * bytes.size());
    for (const char byte : bytes) {
        text += ToHexDigits(static_cast<std::uint8_t>(byte), 2, letterCase);
    }
    return text;
}

std::optional<std::string> ParseHex(std::string_view digits) {
    if (digits.size() % 2 != 0 || !IsHex(digits)) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(digits.size() / 2);
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(ValueOf(digits[i]) << 4 | ValueOf(digits[i + 1]));
    }
    return bytes;
}

bool IsHex(std::string_view text) {
    return std::ranges::all_of(text, IsHexDigit);
}

}  // namespace NVORHOST
