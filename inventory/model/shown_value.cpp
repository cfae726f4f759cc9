#include "inventory/model/shown_value.h"

#include "text/ascii.h"
#include "text/numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

namespace NINVENTORY {
namespace {

using NVORHOST::ParseNumber;

constexpr std::string_view binaryPrefixes[] = {"", "Ki", "Mi", "Gi", "Ti", "Pi", "Ei"};
constexpr std::string_view decimalPrefixes[] = {"", "k", "M", "G", "T", "P", "E"};

// Writes `number` with at most `decimals` decimals, without trailing zeros.
std::string ToShortText(double number, int decimals) {
    std::array<char, 32> buffer{};
    const auto end =
        std::to_chars(buffer.begin(), buffer.end(), number, std::chars_format::fixed, decimals).ptr;
    std::string text(buffer.data(), end);
    if (decimals > 0) {
        text.erase(text.find_last_not_of('0') + 1);
        text.erase(text.find_last_not_of('.') + 1);
    }
    return text;
}

std::string ShowHexadecimal(std::uint64_t number) {
    std::array<char, 16> buffer{};
    const auto end = std::to_chars(buffer.begin(), buffer.end(), number, 16).ptr;
    return "0x" + std::string(buffer.data(), end);
}

// The digits after the point are the last two hexadecimal ones: 0x0210 is 2.10.
std::string ShowBinaryCodedVersion(std::uint64_t number) {
    const std::string minor = ShowHexadecimal(0x100 | (number & 0xFF)).substr(3);
    return ShowHexadecimal(number >> 8).substr(2) + "." + minor;
}

std::string ShowMegahertz(std::uint64_t megahertz) {
    constexpr std::uint64_t perGigahertz = 1000;
    return megahertz < perGigahertz ? std::to_string(megahertz) + " MHz"
                                    : ToShortText(static_cast<double>(megahertz) / perGigahertz, 2) + " GHz";
}

// Thousandths of a unit that people count whole: 750000 mW is 750 W.
std::string ShowThousandths(std::uint64_t number, const std::string& unit) {
    constexpr std::uint64_t perUnit = 1000;
    return number < perUnit ? std::to_string(number) + " m" + unit
                            : ToShortText(static_cast<double>(number) / perUnit, 3) + " " + unit;
}

std::string ShowNumber(EUnit unit, std::uint64_t number) {
    constexpr std::uint64_t kilo = 1000;
    constexpr std::uint64_t kibi = 1024;
    switch (unit) {
        case EUnit::memoryBytes:
            return ShowBinary(number);
        case EUnit::kibibytes:
            return number > UINT64_MAX / kibi ? std::to_string(number) + " KiB" : ShowBinary(number * kibi);
        case EUnit::storageBytes:
            return ShowDecimal(number, "B");
        case EUnit::storageKilobytes:
            return number > UINT64_MAX / kilo ? std::to_string(number) + " kB"
                                              : ShowDecimal(number * kilo, "B");
        case EUnit::bitsPerSecond:
            return ShowDecimal(number, "bit/s");
        case EUnit::megahertz:
            return ShowMegahertz(number);
        case EUnit::milliwatts:
            return ShowThousandths(number, "W");
        case EUnit::milliwattHours:
            return ShowThousandths(number, "Wh");
        case EUnit::millivolts:
            return ShowThousandths(number, "V");
        case EUnit::lanes:
            return "x" + std::to_string(number);
        case EUnit::hexadecimal:
            return ShowHexadecimal(number);
        case EUnit::binaryCodedVersion:
            return ShowBinaryCodedVersion(number);
        default:
            return std::to_string(number);
    }
}

bool HasItsSymbol(EUnit unit) {
    switch (unit) {
        case EUnit::memoryBytes:
        case EUnit::kibibytes:
        case EUnit::storageBytes:
        case EUnit::storageKilobytes:
        case EUnit::bitsPerSecond:
        case EUnit::megahertz:
        case EUnit::milliwatts:
        case EUnit::milliwattHours:
        case EUnit::millivolts:
        case EUnit::lanes:
            return true;
        default:
            return false;
    }
}

// Writes "02005E100001" as "02:00:5e:10:00:01".
std::string ShowHardwareAddress(std::string_view digits) {
    const bool isWhole = digits.size() % 2 == 0 && std::ranges::all_of(digits, NVORHOST::IsHexDigit);
    if (!isWhole) {
        return std::string(digits);
    }
    std::string address;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        address += i > 0 && i % 2 == 0 ? ":" : "";
        address += NVORHOST::ToLower(digits[i]);
    }
    return address;
}

std::string AddSymbol(std::string shown, EUnit unit) {
    const std::string_view symbol = HasItsSymbol(unit) ? "" : GetSymbol(unit);
    return symbol.empty() ? shown : shown.append(" ").append(symbol);
}

std::string ShowText(const TMeaning* meaning, const std::string& type, const std::string& text) {
    if (type == "boolean") {
        return text == "true" ? "yes" : text == "false" ? "no" : text;
    }
    if (meaning == nullptr) {
        return text;
    }
    if (type == "string" || type == "dateTime") {
        return meaning->unit == EUnit::hardwareAddress ? ShowHardwareAddress(text) : text;
    }
    if (const auto number = ParseNumber<std::uint64_t>(text)) {
        const auto word = FindWord(meaning->words, *number);
        return word ? std::string(*word) : AddSymbol(ShowNumber(meaning->unit, *number), meaning->unit);
    }
    const bool isNumber = type == "float" || ParseNumber<std::int64_t>(text);
    return isNumber ? AddSymbol(text, meaning->unit) : text;
}

}  // namespace

std::string ShowValue(std::string_view resourceType, const TProperty& property) {
    const TMeaning* const meaning = FindMeaning(resourceType, property.name);
    std::string shown;
    for (const std::string& value : property.values) {
        shown += (shown.empty() ? "" : ", ") + ShowText(meaning, property.type, value);
    }
    return shown;
}

std::string ShowBinary(std::uint64_t bytes) {
    constexpr std::uint64_t step = 1024;
    std::size_t prefix = 0;
    std::uint64_t unit = 1;
    while (prefix + 1 < std::size(binaryPrefixes) && bytes / unit >= step) {
        unit *= step;
        ++prefix;
    }
    return ToShortText(static_cast<double>(bytes) / static_cast<double>(unit), 2)
        .append(" ")
        .append(binaryPrefixes[prefix])
        .append("B");
}

std::string ShowDecimal(std::uint64_t number, std::string_view unit) {
    constexpr double step = 1000;
    constexpr double roundsUp = 999.5;
    double shown = static_cast<double>(number);
    std::size_t prefix = 0;
    while (prefix + 1 < std::size(decimalPrefixes) && shown >= roundsUp) {
        shown /= step;
        ++prefix;
    }
    const int decimals = prefix == 0 || shown >= 99.95 ? 0 : shown >= 9.995 ? 1 : 2;
    return ToShortText(shown, decimals).append(" ").append(decimalPrefixes[prefix]).append(unit);
}

}  // namespace NINVENTORY
