#include "tests/plugin/plain_base64.h"

#include <stdexcept>

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string ToBits(unsigned value, int width) {
    std::string bits;
    for (int shift = width - 1; shift >= 0; --shift) {
        bits += (value >> shift & 1U) != 0 ? '1' : '0';
    }
    return bits;
}

unsigned FromBits(std::string_view bits) {
    unsigned value = 0;
    for (const char bit : bits) {
        value = value * 2 + (bit == '1' ? 1 : 0);
    }
    return value;
}

}  // namespace

std::string PlainBase64Encode(std::string_view bytes) {
    std::string bits;
    for (const char byte : bytes) {
        bits += ToBits(static_cast<unsigned char>(byte), 8);
    }
    while (bits.size() % 6 != 0) {
        bits += '0';
    }
    std::string text;
    for (std::size_t offset = 0; offset < bits.size(); offset += 6) {
        text += alphabet[FromBits(std::string_view(bits).substr(offset, 6))];
    }
    while (text.size() % 4 != 0) {
        text += '=';
    }
    return text;
}

std::string PlainBase64Decode(std::string_view text) {
    if (text.size() % 4 != 0) {
        throw std::invalid_argument("length is not a multiple of four");
    }
    const std::size_t end = text.find_last_not_of('=') + 1;
    if (text.size() - end > 2) {
        throw std::invalid_argument("more than two pad characters");
    }
    std::string bits;
    for (const char character : text.substr(0, end)) {
        const std::size_t value = alphabet.find(character);
        if (value == std::string_view::npos) {
            throw std::invalid_argument("character outside the alphabet");
        }
        bits += ToBits(static_cast<unsigned>(value), 6);
    }
    std::string bytes;
    for (std::size_t offset = 0; offset + 8 <= bits.size(); offset += 8) {
        bytes += static_cast<char>(FromBits(std::string_view(bits).substr(offset, 8)));
    }
    return bytes;
}
