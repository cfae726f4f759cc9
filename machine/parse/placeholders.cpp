#include "machine/parse/placeholders.h"

#include "text/ascii.h"
#include "text/trim.h"

#include <algorithm>

namespace NVORHOST {
namespace {

// Lower case; "#" matches a run of digits, which may be empty. Each filler was found in the tables of a
// shipped machine.
constexpr std::string_view fillers[] = {
    "not specified",
    "not available",
    "not applicable",
    "not present",
    "not provided",
    "not defined",
    "no enclosure",
    "none",
    "null",
    "n/a",
    "na",
    "default",
    "default string",
    "default_string",
    "undefined",
    "unknown",
    "unspecified",
    "invalid",
    "empty",
    "fill by oem",
    "o.e.m.",
    "oem",
    "o.e.m",
    "to be filled by o.e.m.",
    "to be filled by o.e.m",
    "to be filled by oem",
    "tobefilledbyo.e.m.",
    "system manufacturer",
    "system product name",
    "system version",
    "system serial number",
    "system name",
    "serial number",
    "product name",
    "model",
    "base board serial number",
    "base board product name",
    "base board asset tag",
    "board manufacturer",
    "chassis manufacturer",
    "chassis serial number",
    "asset-1234567890",
    "no asset tag",
    "no asset information",
    "type1productconfigid",
    "type1family",
    "type1sku#",
    "type2 - board vendor name#",
    "type2 - board product name#",
    "type2 - board version#",
    "type2 - board serial number#",
    "type2 - board asset tag#",
    "sernum#",
    "partnum#",
    "manufacturer#",
    "assettagnum#",
    "modulepartnumber#",
    "a#_sernum#",
    "a#_partnum#",
    "a#_manufacturer#",
    "a#_assettagnum#",
    "array#_partnumber#",
    "no dimm",
    "not_supported_in_celeron",
    "bss-0123456789",
    "mb-1234567890",
    "bsn12345678901234567",
    "atn12345678901234567",
    "x.x",
};

// Serial numbers shared by all emulated drives or card readers of a model, in the syntax of `fillers`.
constexpr std::string_view constantSerials[] = {
    "aaaabbbbcccc#",
    "20100201396000000",
};

bool IsOneRepeatedFiller(std::string_view text) {
    constexpr std::string_view fillingCharacters = "0fx-.*? ";
    return fillingCharacters.find(text.front()) != std::string_view::npos &&
           std::all_of(text.begin(), text.end(), [&](char c) { return c == text.front(); });
}

// Matches digits that count up, 0 after 9. Shorter runs are too often real serial numbers.
bool IsCountedRun(std::string_view text) {
    constexpr std::size_t shortest = 8;
    if (text.size() < shortest || (text.front() != '0' && text.front() != '1')) {
        return false;
    }
    char expected = text.front();
    return std::all_of(text.begin(), text.end(), [&](char c) {
        const bool isNext = c == expected;
        expected = expected == '9' ? '0' : static_cast<char>(expected + 1);
        return isNext;
    });
}

bool Matches(std::string_view pattern, std::string_view text) {
    for (const char c : pattern) {
        if (c == '#') {
            text.remove_prefix(
                static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin()));
        } else if (text.starts_with(c)) {
            text.remove_prefix(1);
        } else {
            return false;
        }
    }
    return text.empty();
}

}  // namespace

bool IsPlaceholder(std::string_view text) {
    const std::string lower = ToLowerCase(TrimBlanks(text));
    const auto isIn = [&lower](const auto& table) {
        return std::ranges::any_of(table, [&](std::string_view pattern) { return Matches(pattern, lower); });
    };
    return lower.empty() || IsOneRepeatedFiller(lower) || IsCountedRun(lower) || isIn(fillers) ||
           isIn(constantSerials);
}

std::optional<std::string> WithoutPlaceholder(std::optional<std::string> text) {
    if (text && IsPlaceholder(*text)) {
        return std::nullopt;
    }
    return text;
}

}  // namespace NVORHOST
