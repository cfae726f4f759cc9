#include "writer/catalogue/md5.h"

#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::uint32_t blockSize = 64;
constexpr std::size_t wordsPerBlock = 16;
constexpr std::size_t lengthFieldSize = 8;
constexpr std::size_t stepCount = 64;
constexpr std::size_t stepsPerRound = 16;

// RFC 1321, 3.4: the integer part of 2^32 times |sin(i + 1)|.
constexpr std::array<std::uint32_t, stepCount> additive = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};

struct TRound {
    std::array<int, 4> rotations;  // for steps 0, 1, 2, 3 modulo 4
    std::size_t firstWord;
    std::size_t wordStride;  // modulo 16
};

constexpr std::array<TRound, 4> rounds = {{
    {{7, 12, 17, 22}, 0, 1},
    {{5, 9, 14, 20}, 1, 5},
    {{4, 11, 16, 23}, 5, 3},
    {{6, 10, 15, 21}, 0, 7},
}};

using TChain = std::array<std::uint32_t, 4>;

/// Returns `sum` plus the round's auxiliary function. Terms that do not depend on `b`, the newest word, come
/// first, so that they execute while `b` is still being computed.
template <std::size_t round>
constexpr std::uint32_t AddMixed(std::uint32_t sum, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    if constexpr (round == 0) {
        return sum + (((c ^ d) & b) ^ d);
    } else if constexpr (round == 1) {
        return sum + (~d & c) + (d & b);
    } else if constexpr (round == 2) {
        return sum + ((c ^ d) ^ b);
    } else {
        return sum + ((~d | b) ^ c);
    }
}

/// The two upper-case hexadecimal digits of each byte.
constexpr auto hexPairs = [] {
    constexpr char digits[] = "0123456789ABCDEF";
    std::array<std::array<char, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < pairs.size(); ++byte) {
        pairs[byte] = {digits[byte / 16], digits[byte % 16]};
    }
    return pairs;
}();

/// Returns a message word. Words are read one by one because copying the whole block would stall on the
/// padding that was just stored.
[[gnu::always_inline]] inline std::uint32_t Word(const unsigned char* block, std::size_t index) {
    static_assert(std::endian::native == std::endian::little, "message words are little-endian");
    std::uint32_t word = 0;
    std::memcpy(&word, block + sizeof word * index, sizeof word);
    return word;
}

template <std::size_t step>
[[gnu::always_inline]] inline void Step(TChain& chain, const unsigned char* block) {
    constexpr std::size_t roundIndex = step / stepsPerRound;
    constexpr TRound round = rounds[roundIndex];
    constexpr std::size_t word =
        (round.firstWord + round.wordStride * (step % stepsPerRound)) % wordsPerBlock;
    // The roles of the chaining words rotate at each step, so that no word is moved.
    constexpr std::size_t first = (4 - step % 4) % 4;
    std::uint32_t& a = chain[first];
    const std::uint32_t b = chain[(first + 1) % 4];
    const std::uint32_t c = chain[(first + 2) % 4];
    const std::uint32_t d = chain[(first + 3) % 4];
    a = b + std::rotl(AddMixed<roundIndex>(a + Word(block, word) + additive[step], b, c, d),
                      round.rotations[step % 4]);
}

template <std::size_t... steps>
[[gnu::always_inline]] inline void RunSteps(TChain& chain, const unsigned char* block,
                                            std::index_sequence<steps...> /*order*/) {
    (Step<steps>(chain, block), ...);
}

}  // namespace

void CompressBlock(const unsigned char* block, std::uint32_t& a, std::uint32_t& b, std::uint32_t& c,
                   std::uint32_t& d) {
    TChain chain = {a, b, c, d};
    RunSteps(chain, block, std::make_index_sequence<stepCount>());
    a += chain[0];
    b += chain[1];
    c += chain[2];
    d += chain[3];
}

void WriteChainingWords(const std::uint32_t* digestWords, unsigned char* out) {
    for (std::size_t byteIndex = 0; byteIndex < digestTextLength / 2; ++byteIndex) {
        const std::uint32_t byte = digestWords[byteIndex / 4] >> (byteIndex % 4 * 8) & 0xFFU;
        std::memcpy(out + 2 * byteIndex, hexPairs[byte].data(), 2);
    }
}

void WriteDigestText(const char* data, unsigned int length, unsigned char* out) {
    const std::uint32_t remainder = length % blockSize;
    // Standard MD5 pads a remainder of 56 with one more block. Identifiers already in use were made without
    // it.
    const std::uint32_t padding = (remainder <= 56 ? blockSize : 2 * blockSize) - remainder;
    const std::uint32_t paddedSize = length + padding;
    if (paddedSize < length) {
        throw std::length_error("MD5: padded length does not fit 32 bits");
    }

    const auto message = std::make_unique_for_overwrite<unsigned char[]>(paddedSize);
    unsigned char* const end = message.get() + paddedSize;
    // Whole blocks are cleared before the data is copied: a constant size compiles to a few stores.
    std::memset(end - blockSize, 0, blockSize);
    if (padding > blockSize) {
        std::memset(end - std::size_t{2} * blockSize, 0, blockSize);
    }
    if (length != 0) {  // memcpy must not get a null pointer
        std::memcpy(message.get(), data, length);
    }
    message[length] = 0x80;
    // Only the low half of the length field is used. It may overwrite the marker.
    const std::uint32_t bitCount = length * 8U;
    std::memcpy(end - lengthFieldSize, &bitCount, sizeof bitCount);

    std::uint32_t chain[] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    for (const unsigned char* block = message.get(); block != end; block += blockSize) {
        CompressBlock(block, chain[0], chain[1], chain[2], chain[3]);
    }
    WriteChainingWords(chain, out);
}
