#include "tests/writer/catalogue/plain_md5.h"

#include <cmath>
#include <cstddef>
#include <cstdio>

namespace {

std::uint32_t Rotate(std::uint32_t word, unsigned int count) {
    return word << count | word >> (32 - count);
}

/// Returns the additive constant of a step, computed as RFC 1321 defines it.
std::uint32_t Sine(int step) {
    return static_cast<std::uint32_t>(std::floor(std::fabs(std::sin(step + 1.0)) * 4294967296.0));
}

std::string Pad(std::string_view message, EPadding padding) {
    std::string padded(message);
    padded += '\x80';
    while (padded.size() % 64 != 56) {
        padded += '\0';
    }
    if (padding == EPadding::oneBlockShort && message.size() % 64 == 56) {
        padded.resize(message.size());  // the length field overwrites the marker
    }
    const std::uint64_t bits = std::uint64_t{message.size()} * 8;
    for (unsigned int byte = 0; byte < 8; ++byte) {
        padded += static_cast<char>(bits >> (8 * byte) & 0xFF);
    }
    return padded;
}

std::uint32_t WordAt(std::string_view padded, std::size_t offset) {
    std::uint32_t word = 0;
    for (unsigned int byte = 0; byte < 4; ++byte) {
        word |= std::uint32_t{static_cast<unsigned char>(padded[offset + byte])} << (8 * byte);
    }
    return word;
}

}  // namespace

std::string PlainMd5(std::string_view message, EPadding padding) {
    constexpr unsigned int rotations[4][4] = {
        {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
    std::uint32_t digest[4] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    const std::string padded = Pad(message, padding);

    for (std::size_t block = 0; block < padded.size(); block += 64) {
        std::uint32_t a = digest[0];
        std::uint32_t b = digest[1];
        std::uint32_t c = digest[2];
        std::uint32_t d = digest[3];
        for (int step = 0; step < 64; ++step) {
            std::uint32_t mixed = 0;
            int word = 0;
            if (step < 16) {
                mixed = (b & c) | (~b & d);
                word = step;
            } else if (step < 32) {
                mixed = (b & d) | (c & ~d);
                word = (5 * step + 1) % 16;
            } else if (step < 48) {
                mixed = b ^ c ^ d;
                word = (3 * step + 5) % 16;
            } else {
                mixed = c ^ (b | ~d);
                word = 7 * step % 16;
            }
            const std::uint32_t sum =
                a + mixed + WordAt(padded, block + 4 * static_cast<std::size_t>(word)) + Sine(step);
            a = d;
            d = c;
            c = b;
            b += Rotate(sum, rotations[step / 16][step % 4]);
        }
        digest[0] += a;
        digest[1] += b;
        digest[2] += c;
        digest[3] += d;
    }

    std::string text;
    for (const std::uint32_t word : digest) {
        for (unsigned int byte = 0; byte < 4; ++byte) {
            char pair[3];
            (void)std::snprintf(pair, sizeof pair, "%02X", word >> (8 * byte) & 0xFF);
            text += pair;
        }
    }
    return text;
}
