// Hexadecimal text of numbers and of bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

enum class EHexCase { lower, upper };

/// Returns the lowest `digitCount` hexadecimal digits of `number`, zero-padded and without a prefix.
std::string ToHexDigits(std::uint64_t number, int digitCount, EHexCase letterCase = EHexCase::lower);

/// Returns `number` as "0x" and lower-case digits, zero-padded to `minimumDigits`.
std::string FormatHex(std::uint64_t number, int minimumDigits = 1);

/// Returns two digits for each byte.
std::string ToHex(std::string_view bytes, EHexCase letterCase = EHexCase::lower);

/// Decodes pairs of hexadecimal digits of either case into bytes; nullopt if `digits` has an odd length or
/// another character. An empty text gives no bytes.
std::optional<std::string> ParseHex(std::string_view digits);

/// True if every character of `text` is a hexadecimal digit, and for an empty text.
bool IsHex(std::string_view text);

}  // namespace NVORHOST
