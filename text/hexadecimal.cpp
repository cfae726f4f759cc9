#include "text/hexadecimal.h"

#include <string_view>

namespace NVORHOST {

std::string FormatHex(std::uint64_t number, int minimumDigits) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string reversed;
    for (; number != 0 || static_cast<int>(reversed.size()) < minimumDigits; number >>= 4) {
        reversed += digits[number & 0x0F];
    }
    return "0x" + std::string(reversed.rbegin(), reversed.rend());
}

}  // namespace NVORHOST
