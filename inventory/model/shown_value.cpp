#include "inventory/model/shown_value.h"

#include "text/numbers.h"

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
            return true;
        default:
            return false;
    }
}

std::string ShowText(const TMeaning* meaning, const std::string& type, const std::string& text) {
    if (type == "boolean") {
        return text == "true" ? "yes" : text == "false" ? "no" : text;
    }
    const auto number =
        type == "string" || type == "dateTime" ? std::nullopt : ParseNumber<std::uint64_t>(text);
    if (meaning == nullptr || !number) {
        return text;
    }
    if (const auto word = FindWord(meaning->words, *number)) {
        return std::string(*word);
    }
    const std::string shown = ShowNumber(meaning->unit, *number);
    const std::string_view symbol = HasItsSymbol(meaning->unit) ? "" : GetSymbol(meaning->unit);
    return symbol.empty() ? shown : shown + " " + std::string(symbol);
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
