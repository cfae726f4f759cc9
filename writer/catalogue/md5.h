// MD5 with the padding that the identifiers already in use were made with.
#pragma once

#include <cstddef>
#include <cstdint>

/// The number of characters of a digest in text form.
inline constexpr std::size_t digestTextLength = 32;

/// Writes the MD5 digest of `length` bytes as 32 upper-case hexadecimal characters, without a terminator. The
/// result differs from standard MD5 if `length` is 56 modulo 64 (the padding is one block short), and from
/// 512 MiB on (the bit count is taken modulo 2^32).
/// Errors: std::bad_alloc; std::length_error if the padded length does not fit 32 bits.
void WriteDigestText(const char* data, unsigned int length, unsigned char* out);

/// The compression function: updates the chaining words with the 64 bytes of `block`.
void CompressBlock(const unsigned char* block, std::uint32_t& a, std::uint32_t& b, std::uint32_t& c,
                   std::uint32_t& d);

/// Writes the four chaining words, each least significant byte first, as 32 upper-case hexadecimal
/// characters, high nibble first.
void WriteChainingWords(const std::uint32_t* digestWords, unsigned char* out);
