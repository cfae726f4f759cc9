#include "vorhost/cimxml/base64.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace NVORHOST {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t noDigit = 0xFF;
constexpr char padding = '=';

constexpr auto digitValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(noDigit);
    for (std::size_t at = 0; at < alphabet.size(); ++at) {
        values[static_cast<unsigned char>(alphabet[at])] = static_cast<std::uint8_t>(at);
    }
    return values;
}();

// Up to three bytes as the high bits of 24.
std::uint32_t PackBytes(std::string_view bytes) {
    std::uint32_t bits = 0;
    for (std::size_t at = 0; at < 3; ++at) {
        bits = bits << 8U | (at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0U);
    }
    return bits;
}

void AppendGroup(std::string_view bytes, std::string& text) {
    const std::uint32_t bits = PackBytes(bytes);
    for (std::size_t at = 0; at < 4; ++at) {
        text += at <= bytes.size() ? alphabet[bits >> (18 - 6 * at) & 0x3FU] : padding;
    }
}

// Appends the bytes of 2 to 4 digits; false for a character that is no digit, or bits that no byte takes.
bool AppendBytes(std::string_view digits, std::string& bytes) {
    std::uint32_t bits = 0;
    for (std::size_t at = 0; at < 4; ++at) {
        const std::uint8_t value =
            at < digits.size() ? digitValues[static_cast<unsigned char>(digits[at])] : 0;
        if (value == noDigit) {
            return false;
        }
        bits = bits << 6U | value;
    }
    const std::size_t count = digits.size() - 1;
    for (std::size_t at = 0; at < count; ++at) {
        bytes += static_cast<char>(bits >> (16 - 8 * at) & 0xFFU);
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
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        AppendGroup(bytes.substr(at, 3), text);
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
    for (std::size_t at = 0; at < text.size(); at += 4) {
        if (!AppendBytes(text.substr(at, 4), bytes)) {
            return std::nullopt;
        }
    }
    return bytes;
}

}  // namespace NVORHOST
