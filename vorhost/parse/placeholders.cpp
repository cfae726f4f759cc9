#include "vorhost/parse/placeholders.h"

#include "vorhost/parse/numbers.h"

#include <algorithm>
#include <cctype>

namespace NVORHOST {

namespace {

// Lower case. Each was seen in a shipped machine's tables.
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
    "type2 - board serial number",
    "type2 - board product name1",
    "sernum0",
    "partnum0",
    "manufacturer0",
    "bss-0123456789",
    "mb-1234567890",
    "bsn12345678901234567",
    "atn12345678901234567",
    "x.x",
};

constexpr std::string_view countedRuns[] = {"0123456789", "123456789", "1234567890",
                                            "012345678",  "12345678",  "01234567890123456789"};

char ToLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsOneRepeatedFiller(std::string_view text) {
    constexpr std::string_view fillingCharacters = "0fx-.*? ";
    return fillingCharacters.find(text.front()) != std::string_view::npos &&
           std::all_of(text.begin(), text.end(), [&](char c) { return c == text.front(); });
}

}  // namespace

bool IsPlaceholder(std::string_view text) {
    std::string lower(TrimBlanks(text));
    std::transform(lower.begin(), lower.end(), lower.begin(), ToLower);
    const auto contains = [&](const auto& table) {
        return std::find(std::begin(table), std::end(table), lower) != std::end(table);
    };
    return lower.empty() || IsOneRepeatedFiller(lower) || contains(fillers) || contains(countedRuns);
}

std::optional<std::string> WithoutPlaceholder(std::optional<std::string> text) {
    if (text && IsPlaceholder(*text)) {
        return std::nullopt;
    }
    return text;
}

}  // namespace NVORHOST
