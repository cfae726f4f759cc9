#include "vorhost/cimxml/base64.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace NVORHOST {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t notADigit = 0xFF;
constexpr char padding = '=';

constexpr auto digitValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(notADigit);
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
        values[static_cast<unsigned char>(alphabet[i])] = static_cast<std::uint8_t>(i);
    }
    return values;
}();

// Packs up to three bytes into 24 bits, the first one highest.
std::uint32_t PackBytes(std::string_view bytes) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        bits = bits << 8U | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
    }
    return bits;
}

void AppendGroup(std::string_view bytes, std::string& text) {
    const std::uint32_t bits = PackBytes(bytes);
    for (std::size_t i = 0; i < 4; ++i) {
        text += i <= bytes.size() ? alphabet[bits >> (18 - 6 * i) & 0x3FU] : padding;
    }
}

// Appends the bytes of 2 to 4 digits. Returns false for an invalid character, and if unused bits are not
// zero.
bool AppendBytes(std::string_view digits, std::string& bytes) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::uint8_t value = i < digits.size() ? digitValues[static_cast<unsigned char>(digits[i])] : 0;
        if (value == notADigit) {
            return false;
        }
        bits = bits << 6U | value;
    }
    const std::size_t count = digits.size() - 1;
    for (std::size_t i = 0; i < count; ++i) {
        bytes += static_cast<char>(bits >> (16 - 8 * i) & 0xFFU);
    }
    return (bits & ((1U << (24 - 8 * count)) - 1)) == 0;
}

std::size_t CountPadding(std::string_view text) {
    const std::size_t last = text.find_last_not_of(padding);
    return text.size() - (last == std::string_view::npos ? 0 : last + 1);
}

}  // namespace

std::string EncodeBase64(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        AppendGroup(bytes.substr(i, 3), text);
    }
    return text;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
    const std::size_t paddings = CountPadding(text);
    if (text.size() % 4 != 0 || paddings > 2) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    text.remove_suffix(paddings);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        if (!AppendBytes(text.substr(i, 4), bytes)) {
            return std::nullopt;
        }
    }
    return bytes;
}

}  // namespace NVORHOST
