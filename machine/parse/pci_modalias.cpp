#include "machine/parse/pci_modalias.h"

#include "text/numbers.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace NVORHOST {
namespace {

// Removes `prefix` and `digits` hexadecimal digits from the front of `text`; returns false if it starts with
// something else.
template <typename TNumber>
bool TakeNumber(std::string_view& text, std::string_view prefix, std::size_t digits, TNumber& number) {
    if (!text.starts_with(prefix)) {
        return false;
    }
    const std::string_view token = text.substr(prefix.size(), digits);
    const auto parsed = ParseNumber<TNumber>(token, 16);
    if (token.size() != digits || !parsed) {
        return false;
    }
    number = *parsed;
    text.remove_prefix(prefix.size() + digits);
    return true;
}

}  // namespace

std::string MakePciModalias(const TPciNumbers& numbers) {
    char text[64];
    const int length = std::snprintf(
        text, sizeof text, "pci:v%08Xd%08Xsv%08Xsd%08Xbc%02Xsc%02Xi%02x",
        static_cast<unsigned>(numbers.vendorId), static_cast<unsigned>(numbers.deviceId),
        static_cast<unsigned>(numbers.subsystemVendorId), static_cast<unsigned>(numbers.subsystemId),
        static_cast<unsigned>(numbers.baseClass), static_cast<unsigned>(numbers.subclass),
        static_cast<unsigned>(numbers.programmingInterface));
    return {text, static_cast<std::size_t>(std::max(length, 0))};
}

std::optional<TPciNumbers> ParsePciModalias(std::string_view text) {
    constexpr std::size_t idDigits = 8;
    constexpr std::size_t classDigits = 2;
    TPciNumbers numbers;
    std::string_view rest = TrimBlanks(text);
    const bool isWhole = TakeNumber(rest, "pci:v", idDigits, numbers.vendorId) &&
                         TakeNumber(rest, "d", idDigits, numbers.deviceId) &&
                         TakeNumber(rest, "sv", idDigits, numbers.subsystemVendorId) &&
                         TakeNumber(rest, "sd", idDigits, numbers.subsystemId) &&
                         TakeNumber(rest, "bc", classDigits, numbers.baseClass) &&
                         TakeNumber(rest, "sc", classDigits, numbers.subclass) &&
                         TakeNumber(rest, "i", classDigits, numbers.programmingInterface);
    return isWhole && rest.empty() ? std::optional(numbers) : std::nullopt;
}

}  // namespace NVORHOST
