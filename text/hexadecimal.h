// Addresses as text.
#pragma once

#include <cstdint>
#include <string>

namespace NVORHOST {

/// "0x" and lower-case digits, padded with zeros to `minimumDigits`.
std::string FormatHex(std::uint64_t number, int minimumDigits = 1);

}  // namespace NVORHOST
